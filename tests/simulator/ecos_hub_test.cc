#include "simulator/stations/ecos_hub.h"

#include <gtest/gtest.h>

#include <map>

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;
using Strings = std::vector<std::string>;

const std::string status_reply = "<REPLY get(1,status)>\r\n1 status[STOP]\r\n<END 0 (OK)>\r\n";

// What reached a client, one element for each write.
class Link : public ClientLink {
 public:
  void write(std::string_view bytes) override { writes.emplace_back(bytes); }
  void close() override { closed = true; }

  std::string take() {
    std::string text;
    for (const auto& bytes : std::exchange(writes, {})) text += bytes;
    return text;
  }

  Strings writes;
  bool closed = false;
};

class EcosHubTest : public testing::Test {
 protected:
  void after(std::chrono::milliseconds time, std::function<void()> action) {
    timers.emplace(now + time, std::move(action));
  }

  void pass(std::chrono::milliseconds time) {
    const auto end = now + time;
    while (!timers.empty() && timers.begin()->first <= end) {
      now = timers.begin()->first;
      const auto action = timers.extract(timers.begin()).mapped();
      action();
    }
    now = end;
  }

  void say(const std::string& bytes) { hub.receive(client, bytes); }
  std::string ask(const std::string& line) {
    say(line + "\n");
    const auto answer = link.take();
    const auto end = answer.find("<END ");
    return end == std::string::npos ? ""
                                    : answer.substr(end + 5, answer.find(' ', end + 5) - end - 5);
  }

  std::chrono::milliseconds now{0};
  std::multimap<std::chrono::milliseconds, std::function<void()>> timers;
  EcosHub hub{[this](auto time, auto action) { after(time, std::move(action)); }};
  Link link;
  EcosClient client = hub.join(link);
};

TEST_F(EcosHubTest, sends_late_but_in_order) {
  hub.faults().late = 100ms;
  say("get(1,status)\n");
  hub.faults().late = 0ms;
  say("get(10,size)\n");
  pass(99ms);
  EXPECT_EQ("", link.take());
  pass(1ms);
  EXPECT_EQ(status_reply + "<REPLY get(10,size)>\r\n10 size[0]\r\n<END 0 (OK)>\r\n", link.take());
}

TEST_F(EcosHubTest, sends_in_pieces_that_make_up_the_messages) {
  hub.faults().pieces = 20;
  hub.faults().gap = 5ms;
  say("get(1,status)\nget(1,status)\n");
  EXPECT_EQ(Strings{"<REPLY get(1,status)"}, link.writes);
  pass(4ms);
  EXPECT_EQ(1U, link.writes.size());
  pass(1ms);
  EXPECT_EQ(2U, link.writes.size());
  pass(1s);
  EXPECT_EQ(6U, link.writes.size());
  EXPECT_EQ(status_reply + status_reply, link.take());
}

TEST_F(EcosHubTest, forgets_what_is_still_to_be_sent_to_a_client_that_left) {
  hub.faults().late = 10ms;
  hub.faults().pieces = 10;
  say("get(1,status)\nget(1,status)\n");
  pass(11ms);
  const auto before = link.writes.size();
  EXPECT_EQ(1U, before);
  hub.leave(client);
  pass(1s);
  EXPECT_EQ(before, link.writes.size());
}

TEST_F(EcosHubTest, puts_garbage_before_messages) {
  hub.faults().garbage = "\x01<REP";
  say("get(1,status)\n");
  EXPECT_EQ("\x01<REP" + status_reply, link.take());
  hub.faults().clear();
  say("get(1,status)\n");
  EXPECT_EQ(status_reply, link.take());
}

TEST_F(EcosHubTest, hangs_up_after_so_many_commands) {
  hub.faults().drop_after(2);
  say("get(1,status)\nget(1,status)\nset(1,go)\nset(1,go)\n");
  EXPECT_TRUE(link.closed);
  EXPECT_EQ(status_reply + status_reply, link.take());
  EXPECT_FALSE(hub.model().track_power());
  EXPECT_EQ(0U, hub.client_count());

  Link again;
  hub.receive(hub.join(again), "get(1,status)\n");
  EXPECT_EQ(status_reply, again.take());
}

TEST_F(EcosHubTest, hangs_up_on_a_line_without_an_end_and_releases_its_control) {
  (void)hub.model().add_locomotive(3, "V60");
  EXPECT_EQ("0", ask("request(1000,control)"));
  for (int i = 0; i < 100 && !link.closed; ++i) say(std::string(1000, 'x'));
  EXPECT_TRUE(link.closed);
  EXPECT_FALSE(hub.model().locomotive(3)->holder);
}

TEST_F(EcosHubTest, logs_every_line_when_it_passes) {
  hub.faults().late = 10ms;
  say("get(1,sta\x02tus)\nget(1,status)\n");
  EXPECT_EQ((Strings{"get(1,sta\x02tus)", "get(1,status)"}), hub.log().commands());
  EXPECT_EQ(3U, hub.log().entries().size());
  pass(10ms);
  Strings lines;
  for (const auto& entry : hub.log().entries()) {
    lines.push_back(format(entry).substr(std::string("12:00:00.000").size()));
  }
  EXPECT_EQ(
      (Strings{" #1 ** connected", " #1 <- get(1,sta?tus)", " #1 <- get(1,status)",
               " #1 -> <REPLY get(1,sta?tus)>",
               " #1 -> <END 13 (syntax error: closing bracket expected at 9)>",
               " #1 -> <REPLY get(1,status)>", " #1 -> 1 status[STOP]", " #1 -> <END 0 (OK)>"}),
      lines);
}

TEST(EcosLog, keeps_the_newest_lines_and_shows_the_time_in_full_width) {
  EcosLog log(2);
  for (const auto* line : {"a", "b", "c"}) log.add(1, EcosLog::Kind::received, line);
  EXPECT_EQ((Strings{"b", "c"}), log.commands());

  const EcosLogEntry entry{std::chrono::system_clock::time_point(5007ms), 0,
                           EcosLogEntry::Kind::note, "x"};
  EXPECT_EQ(":05.007 ** x", format(entry).substr(5));  // hours and minutes are local
}

}  // namespace
}  // namespace zemblar::simulator
