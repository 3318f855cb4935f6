#include "simulator/stations/ecos_protocol.h"

#include <gtest/gtest.h>

#include <random>

#include "simulator/stations/line_splitter.h"

namespace zemblar::simulator {
namespace {

using Lines = std::vector<std::string>;

TEST(EcosProtocol, reads_a_command_into_verb_object_and_options) {
  const struct {
    const char* line;
    EcosCommand command;
  } cases[] = {
      {"get(1)", {"get", 1, {}}},
      {"set(1,go)", {"set", 1, {{"go", {}}}}},
      {"queryObjects(10,addr,name)", {"queryObjects", 10, {{"addr", {}}, {"name", {}}}}},
      {"set(1000,func[2,1],dir[0])", {"set", 1000, {{"func", {"2", "1"}}, {"dir", {"0"}}}}},
      {" set ( 1000 , speed [63] ) ", {"set", 1000, {{"speed", {"63"}}}}},
      {R"-(create(10,name["A ""B"", [C])"],append))-",
       {"create", 10, {{"name", {R"-(A "B", [C]))-"}}, {"append", {}}}}},
      {R"(set(1000,name[""]))", {"set", 1000, {{"name", {""}}}}},
      {R"(set(1000,name["""]"]))", {"set", 1000, {{"name", {"\"]"}}}}},
      {"set(11,switch[])", {"set", 11, {{"switch", {""}}}}},
  };
  for (const auto& [line, command] : cases) {
    const auto parsed = parse_command(line);
    ASSERT_TRUE(std::holds_alternative<EcosCommand>(parsed)) << line;
    EXPECT_EQ(command, std::get<EcosCommand>(parsed)) << line;
  }
}

TEST(EcosProtocol, says_where_a_line_stops_being_a_command) {
  const struct {
    const char* line;
    std::size_t position;
  } cases[] = {
      {"", 0},
      {"(1)", 0},
      {"get", 3},
      {"get(", 4},
      {"get(1", 5},
      {"get(1,", 6},
      {"get(1,,speed)", 6},
      {"get(x)", 5},
      {"get(-1)", 6},
      {"get(4294967296)", 14},
      {"get(1) x", 7},
      {"set(1000,speed[63)", 18},
      {"set(1000,speed[63]", 18},
      {R"(set(1000,name["A"B]))", 17},
      {R"(set(1000,name["A""]))", 20},
  };
  for (const auto& [line, position] : cases) {
    const auto parsed = parse_command(line);
    ASSERT_TRUE(std::holds_alternative<EcosSyntaxError>(parsed)) << line;
    EXPECT_EQ(position, std::get<EcosSyntaxError>(parsed).position) << line;
  }
}

TEST(EcosProtocol, survives_any_damage_to_a_line) {
  const std::string sample = R"(create(10,addr[3],name["A ""B"""],func[2,1],append))";
  std::mt19937 random(20);
  for (int round = 0; round < 5000; ++round) {
    auto line = sample.substr(0, random() % (sample.size() + 1));
    for (auto changes = random() % 4; changes > 0 && !line.empty(); --changes) {
      line[random() % line.size()] = static_cast<char>(random());
    }
    const auto parsed = parse_command(line);
    const auto* error = std::get_if<EcosSyntaxError>(&parsed);
    EXPECT_TRUE(!error || error->position <= line.size()) << line;
  }
}

TEST(EcosProtocol, reads_back_every_quoted_text) {
  for (const auto* text : {"", "V60", "\"", "a \"b\" c", "[1,2])", "K\xC3\xB6ln"}) {
    const auto parsed = parse_command("set(1000,name[" + quoted(text) + "])");
    ASSERT_TRUE(std::holds_alternative<EcosCommand>(parsed)) << text;
    EXPECT_EQ(text, std::get<EcosCommand>(parsed).options.at(0).args.at(0));
  }
  EXPECT_EQ(R"("two lines")", quoted("two\nlines"));
}

TEST(EcosProtocol, writes_messages_that_stay_in_their_lines) {
  EXPECT_EQ("<REPLY get(1,status)>\r\n1 status[GO]\r\n<END 0 (OK)>\r\n",
            format_reply("get(1,status)", {"1 status[GO]"}, 0, "OK"));
  EXPECT_EQ("<REPLY a?b>\r\n<END 13 (syntax error)>\r\n",
            format_reply("a\rb", {}, 13, status_text(EcosStatus::syntax_error)));
  EXPECT_EQ("<EVENT 1000>\r\n1000 speed[0]\r\n1000 func[2,1]\r\n<END 0 (OK)>\r\n",
            format_event(1000, {"1000 speed[0]", "1000 func[2,1]"}));
}

TEST(LineSplitter, finds_the_same_lines_however_the_stream_is_split) {
  const std::string stream = "get(1)\r\n\nset(1,go)\nrest";
  for (std::size_t first = 0; first <= stream.size(); ++first) {
    LineSplitter splitter;
    auto lines = splitter.feed(stream.substr(0, first));
    for (auto& line : splitter.feed(stream.substr(first))) lines.push_back(line);
    EXPECT_EQ((Lines{"get(1)", "", "set(1,go)"}), lines) << first;
  }
}

TEST(LineSplitter, gives_up_on_a_line_that_does_not_end) {
  LineSplitter splitter(8);
  EXPECT_EQ(Lines{"12345678"}, splitter.feed("12345678\n1234"));
  EXPECT_FALSE(splitter.overflowed());
  EXPECT_EQ(Lines{}, splitter.feed("56789\nget(1)\n"));
  EXPECT_TRUE(splitter.overflowed());
  EXPECT_EQ(Lines{}, splitter.feed("get(1)\n"));
}

}  // namespace
}  // namespace zemblar::simulator
