#include "simulator/stations/ecos_model.h"

#include <gtest/gtest.h>

namespace zemblar::simulator {
namespace {

// A station with two locomotives and what its clients get from it, in short: "2: 1 status[GO]" is
// an event to client 2, "=25" the end of a reply.
class EcosModelTest : public testing::Test {
 protected:
  EcosModelTest() {
    (void)model.add_locomotive(3, "V60");
    (void)model.add_locomotive(1234, "BR \"50\"");
  }

  // The reply to a command: its body lines, then the status.
  std::string ask(EcosClient client, const std::string& line) {
    const auto messages = model.execute(client, line);
    EXPECT_EQ(client, messages.at(0).to);
    note_events({messages.begin() + 1, messages.end()});
    const auto head = "<REPLY " + line + ">\r\n";
    EXPECT_TRUE(messages.at(0).text.starts_with(head)) << messages.at(0).text;
    return shorten(messages.at(0).text.substr(head.size()));
  }

  void note_events(const std::vector<EcosMessage>& messages) {
    for (const auto& [to, text] : messages) {
      EXPECT_TRUE(text.starts_with("<EVENT ")) << text;
      events.push_back(decimal(to) + ": " + shorten(text.substr(text.find('\n') + 1)));
    }
  }

  std::vector<std::string> take_events() { return std::exchange(events, {}); }

  static std::string shorten(const std::string& message) {
    const auto end = message.rfind("<END ");
    auto text = message.substr(0, end);
    const auto status = message.substr(end + 5, message.find(' ', end + 5) - end - 5);
    while (text.find("\r\n") != std::string::npos) text.replace(text.find("\r\n"), 2, "|");
    return status == "0" ? text : text + "=" + status;
  }

  EcosModel model;
  std::vector<std::string> events;
};

using Events = std::vector<std::string>;

TEST_F(EcosModelTest, answers_questions_about_its_objects) {
  const struct {
    const char* command;
    const char* answer;
  } cases[] = {
      {"get(1,status)", "1 status[STOP]|"},
      {"queryObjects(10)", "1000|1001|"},
      {"queryObjects(10,addr)", "1000 addr[3]|1001 addr[1234]|"},
      {"queryObjects(10,name,protocol)",
       R"(1000 name["V60"] protocol[DCC128]|1001 name["BR ""50"""] protocol[DCC128]|)"},
      {"get(10,size)", "10 size[2]|"},
      {"get(1000,speed,dir,func[31])", "1000 speed[0]|1000 dir[0]|1000 func[31,0]|"},
      {"get(1000,speed,colour)", "=11"},
      {"get(1000,func[32])", "=12"},
      {"get(1000,func)", "=12"},
      {"get(999,speed)", "=15"},
      {"get(1002,speed)", "=15"},
      {"queryObjects(1)", "=15"},
      {"request(1,control)", "=11"},
      {"request(10,view,control)", "=11"},
      {"set(10,go)", "=15"},
      {"explode(1)", "=10"},
      {"get(1,status", "=13"},
  };
  for (const auto& [command, answer] : cases) EXPECT_EQ(answer, ask(1, command)) << command;
}

TEST_F(EcosModelTest, obeys_the_holder_of_control_alone) {
  EXPECT_EQ("=25", ask(1, "set(1000,speed[63])"));
  EXPECT_EQ("", ask(1, "request(1000,control)"));
  EXPECT_EQ("", ask(1, "request(1000,control)"));
  EXPECT_EQ("", ask(1, "set(1000,speed[63],dir[1],func[2,1])"));
  EXPECT_EQ("=25", ask(2, "set(1000,speed[5])"));
  EXPECT_EQ("=25", ask(2, "request(1000,control)"));
  EXPECT_EQ("=25", ask(2, "release(1000,control)"));
  EXPECT_EQ(Events{}, take_events());

  EXPECT_EQ("", ask(2, "request(1000,control,force)"));
  EXPECT_EQ(Events{"1: 1000 msg[CONTROL_LOST]|"}, take_events());
  EXPECT_EQ("=25", ask(1, "set(1000,speed[5])"));
  EXPECT_EQ("", ask(2, "release(1000,control)"));
  EXPECT_EQ("=25", ask(2, "set(1000,speed[5])"));

  const auto* locomotive = model.locomotive(3);
  ASSERT_TRUE(locomotive);
  EXPECT_EQ(63U, locomotive->speed);
  EXPECT_EQ(1U, locomotive->direction);
  EXPECT_EQ(std::bitset<32>(4), locomotive->functions);
  EXPECT_EQ(0U, model.locomotive(1234)->speed);
}

TEST_F(EcosModelTest, refuses_a_command_as_a_whole) {
  ask(1, "request(1000,control,view)");
  for (const auto* bad :
       {"speed[128]", "speed[-1]", "speed", "speed[]", "dir[2]", "func[32,1]", "func[1]",
        "func[1,2]", "stop[1]", "addr[0]", "addr[10240]", "protocol[X]"}) {
    EXPECT_EQ("=12", ask(1, std::string("set(1000,speed[9],") + bad + ")")) << bad;
  }
  EXPECT_EQ("=11", ask(1, "set(1000,speed[9],colour[1])"));
  EXPECT_EQ(0U, model.locomotive(3)->speed);
  EXPECT_EQ("=12", ask(1, "set(11,switch[DCC1g],switch[DCC1x])"));
  EXPECT_TRUE(model.switches().empty());
  EXPECT_EQ("=25", ask(2, "release(1000,view,control)"));
  EXPECT_EQ(Events{}, take_events());
}

}  // namespace
}  // namespace zemblar::simulator
