#include "devices/ecos/ecos_msg.h"

#include <gtest/gtest.h>

#include <random>

#include "devices/ecos/ecos_commands.h"

namespace zemblar {
namespace {

// As a station sends them.
const std::string status_reply = "<REPLY get(1,status)>\r\n1 status[GO]\r\n<END 0 (OK)>\r\n";
const std::string power_event = "<EVENT 1>\r\n1 status[STOP]\r\n<END 0 (OK)>\r\n";
const std::string list_reply =
    "<REPLY queryObjects(10,addr)>\n1000 addr[3]\n1001 addr[10239] name[\"Say \"\"hi\"\" <now>\"]\n"
    "1002\n1003 long short addr[]\n<END 0 (OK)>\n";
const std::string refusal = "<REPLY request(7,control,force)>\r\n<END 15 (unknown object)>\r\n";
const std::vector<std::string> samples = {status_reply, power_event, list_reply, refusal};

ECoSMsg parse(const std::string& bytes, std::size_t* consumed = nullptr) {
  auto n = bytes.size();
  ECoSMsg message(bytes.data(), n);
  if (consumed) *consumed = n;
  return message;
}

std::string reply_with(const std::string& line) {
  return "<REPLY x>\n" + line + "\n<END 0 (OK)>\n";
}

/// The commands and event objects that come out of a stream read in the given pieces.
std::vector<std::string> heads(const std::vector<std::string>& pieces) {
  ECoSFraming framing;
  std::vector<std::string> heads;
  for (const auto& piece : pieces) {
    std::copy(piece.begin(), piece.end(), framing.tail());
    framing.add(piece.size());
    while (const auto message = framing.next()) {
      heads.push_back(message->get_type() == ECoSMsg::reply ? message->get_command() : "event");
    }
  }
  return heads;
}

TEST(ECoSMsg, reads_replies_and_events) {
  const auto status = parse(status_reply);
  EXPECT_EQ(ECoSMsg::reply, status.get_type());
  EXPECT_EQ("get(1,status)", status.get_command());
  EXPECT_EQ("GO", status.get_object(1).at("status"));
  EXPECT_EQ(0u, status.get_status());

  const auto event = parse(power_event);
  EXPECT_EQ(ECoSMsg::event, event.get_type());
  EXPECT_EQ(1u, event.get_object());

  EXPECT_EQ(15u, parse(refusal).get_status());
  EXPECT_TRUE(parse(refusal).get_objects().empty());
  EXPECT_THROW((void)parse(refusal).get_object(7), ECoSMsg::ErrorNoObject);

  const ECoSMsg::Objects expected = {{1000, {{"addr", "3"}}},
                                     {1001, {{"addr", "10239"}, {"name", "Say \"hi\" <now>"}}},
                                     {1002, {}},
                                     {1003, {{"long", ""}, {"short", ""}, {"addr", ""}}}};
  EXPECT_EQ(expected, parse(list_reply).get_objects());
}

TEST(ECoSMsg, reads_body_lines_by_the_grammar_and_no_wider) {
  using Values = ECoSMsg::Values;
  const std::pair<const char*, Values> whole[] = {
      {"5 a[1] a[2]", {{"a", "2"}}},
      {"5  \t a   b[x9]", {{"a", ""}, {"b", "x9"}}},
      {"5 a[\"\"]", {{"a", ""}}},
      {"5 a[\"\"\"\"]", {{"a", "\""}}},
      {"5 a[\"]\"]", {{"a", "]"}}},
      {"5 a", {}},
      {"5 a[1", {}},
      {"5 a[\"open", {}},
      {"5", {}},
      {"5 a[1]b[2]", {{"a", "1"}, {"b", "2"}}},
      {"5 a[\"\xc3\xa4,-\"]", {{"a", "\xc3\xa4,-"}}},
  };
  for (const auto& [line, values] : whole) {
    SCOPED_TRACE(line);
    EXPECT_EQ(values, parse(reply_with(line)).get_object(5));
  }
  for (const auto* line :
       {"5 func[2,1]", "5 a[-1]", "5 a_b[1]", "x", "-5 a", "5[1]", "5 [1]", "5 a[ 1]", "5 a[1 ]",
        "5 a[\"x\"y]", "5 a]", "<EVENT 1>", "5 \xc3\xa4"}) {
    SCOPED_TRACE(line);
    EXPECT_THROW(parse(reply_with(line)), ECoSMsg::ErrorBroken);
  }
  EXPECT_EQ(1u, parse(reply_with("")).get_objects().count(0)) << "an empty line names object 0";
}

TEST(ECoSMsg, skips_what_is_no_message_and_says_how_much_it_took) {
  for (const auto* before : {"garbage\r\n", "<", "<REPLY", "< <EVENT x>\n", "<END 0 (OK)>\r\n",
                             "<EVENTS 1>\n", "<REPLY a> \n", "\n\n<>\n"}) {
    SCOPED_TRACE(before);
    std::size_t consumed = 0;
    EXPECT_EQ("get(1,status)", parse(before + status_reply + "<REP", &consumed).get_command());
    EXPECT_EQ(std::string(before).size() + status_reply.size(), consumed);
  }
}

TEST(ECoSMsg, reads_the_status_of_any_end_line) {
  const std::pair<const char*, unsigned> ends[] = {
      {"<END 22 (x)>", 22},   {"<END   7>\r", 7}, {"<END15>", 15},
      {"<END 9 (cut off", 0}, {"<END>", 0},       {"<END 99999999999>", ~0u}};
  for (const auto& [end, status] : ends) {
    EXPECT_EQ(status, parse(std::string("<REPLY x>\n") + end + "\n").get_status()) << end;
  }
}

TEST(ECoSMsg, calls_every_prefix_of_a_message_partial) {
  for (const auto& sample : samples) {
    for (std::size_t length = 0; length < sample.size(); ++length) {
      auto n = length;
      EXPECT_THROW(ECoSMsg(sample.data(), n), ECoSMsg::ErrorPartial) << sample << length;
      EXPECT_EQ(length, n);
    }
  }
}

TEST(ECoSFraming, puts_messages_together_however_they_are_split) {
  std::string stream;
  for (const auto& sample : samples) stream += "noise\r\n" + sample;
  const std::vector<std::string> expected = {"get(1,status)", "event", "queryObjects(10,addr)",
                                             "request(7,control,force)"};
  for (std::size_t split = 0; split <= stream.size(); ++split) {
    EXPECT_EQ(expected, heads({stream.substr(0, split), stream.substr(split)})) << split;
  }
  std::vector<std::string> single_bytes;
  for (const auto c : stream) single_bytes.emplace_back(1, c);
  EXPECT_EQ(expected, heads(single_bytes));
}

TEST(ECoSFraming, finds_the_next_message_after_a_broken_one) {
  const std::string broken = "<EVENT 1000>\r\n1000 func[2,1]\r\n<END 0 (OK)>\r\n";
  EXPECT_EQ(std::vector<std::string>{"get(1,status)"}, heads({broken + broken + status_reply}));
  EXPECT_EQ(std::vector<std::string>{"get(1,status)"}, heads({broken, broken, status_reply}));
  // A message lost in the middle takes its own answer with it and nothing else.
  const auto cut = "<REPLY a>\r\n1 b[" + power_event + status_reply;
  EXPECT_EQ((std::vector<std::string>{"event", "get(1,status)"}), heads({cut}));
}

TEST(ECoSFraming, has_no_room_left_for_a_message_longer_than_its_buffer) {
  const auto message_of = [](std::size_t size) {
    const std::string frame = "<REPLY q>\n1 a[]\n<END 0>\n";
    return "<REPLY q>\n1 a[" + std::string(size - frame.size(), 'x') + "]\n<END 0>\n";
  };
  EXPECT_EQ(1u, heads({message_of(1024)}).size());
  ECoSFraming framing;
  const auto bytes = message_of(1025);
  std::copy_n(bytes.begin(), framing.room(), framing.tail());
  framing.add(framing.room());
  EXPECT_FALSE(framing.next());
  EXPECT_EQ(0u, framing.room());
}

TEST(ECoSFraming, survives_changed_bytes_and_hears_the_station_again) {
  constexpr unsigned seed = 20260;
  std::mt19937 random(seed);
  std::string stream;
  for (const auto& sample : samples) stream += sample;
  for (int round = 0; round < 5000; ++round) {
    auto changed = stream;
    for (auto count = random() % 4 + 1; count > 0; --count) {
      const auto place = random() % changed.size();
      if (random() % 3 == 0) {
        changed.erase(place, random() % 9);
      } else {
        changed[place] = "<>[]\"\r\n ,0a\0\xff"[random() % 13];
      }
    }
    // Two, since the first may be swallowed as the rest of what was changed.
    const auto got = heads({changed, status_reply, status_reply});
    ASSERT_FALSE(got.empty());
    EXPECT_EQ("get(1,status)", got.back()) << "seed " << seed << " round " << round << changed;
  }
}

TEST(ECoSCommands, quote_names_and_number_outputs_from_zero) {
  EXPECT_EQ("create(10,addr[3],name[\"The \"\"Fast\"\" One\"],append)",
            ecos::create_locomotive(Address(3), "The \"Fast\" One"));
  EXPECT_EQ("set(11,switch[DCC0g])", ecos::switch_output(1, 0, true));
  EXPECT_EQ("set(11,switch[DCC2047r])", ecos::switch_output(512, 3, false));
}

}  // namespace
}  // namespace zemblar
