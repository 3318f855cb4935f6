// Hardware that comes and goes.

#include "devices/port/hw_list.h"

#include <glibmm/main.h>

#include "runtime/timer.h"
#include "support/layout_fixture.h"

namespace zemblar::test {
namespace {

using namespace std::chrono_literals;

using Log = std::vector<std::string>;

class Bench : public HWSource {
 public:
  std::vector<HWDevice> list() override { return records; }
  void plug(const std::string& name, const std::string& id) {
    HWDevice record;
    record.object_name = name;
    record.hardware_ids = {id};
    record.port_name = "/dev/" + name;
    records.push_back(record);
    signal_changed().emit();
  }
  void pull(const std::string& name) {
    std::erase_if(records, [&](const auto& record) { return record.object_name == name; });
    signal_changed().emit();
  }
  std::vector<HWDevice> records;
};

const Log replaced = {"/dev/tty0 removed", "/dev/tty0 there", "/dev/tty0 offered"};

Log told;

class Gadget : public AttachedHardware {
 public:
  explicit Gadget(std::string name) : name_(std::move(name)) {
    told.push_back(name_ + " there");
    newest = this;
  }
  [[nodiscard]] bool is_lost() const override { return lost; }
  void offer() override { told.push_back(name_ + " offered"); }
  void remove() override { told.push_back(name_ + " removed"); }

  bool lost = false;
  static inline Gadget* newest = nullptr;

 private:
  std::string name_;
};

int score_any_test(const HWDevice& record) {
  return record.has_hardware_id("TEST\\GADGET") || record.has_hardware_id("test\\special") ? 10 : 0;
}
int score_special(const HWDevice& record) {
  return record.has_hardware_id("TEST\\SPECIAL") ? 20 : 0;
}

const HWList::Kind::Registration any_test({score_any_test,
                                           [](const HWDevice& record, std::unique_ptr<SerialLine>) {
                                             return std::unique_ptr<AttachedHardware>(
                                                 new Gadget(record.port_name));
                                           }});
const HWList::Kind::Registration special({score_special,
                                          [](const HWDevice& record, std::unique_ptr<SerialLine>) {
                                            return std::unique_ptr<AttachedHardware>(
                                                new Gadget("special " + record.port_name));
                                          }});

TEST(HWListTest, gives_each_piece_to_who_knows_it_best_for_as_long_as_it_is_there) {
  told.clear();
  auto owned = std::make_unique<Bench>();
  auto& bench = *owned;
  bench.plug("tty0", "test\\Gadget");  // letters of either case
  HWList list(std::move(owned));
  list.rescan();
  EXPECT_EQ(std::exchange(told, {}), (Log{"/dev/tty0 there", "/dev/tty0 offered"}));
  int changes = 0;
  list.signal_changed().connect([&] { ++changes; });
  bench.plug("tty1", "TEST\\SPECIAL");
  bench.plug("tty2", "TEST\\UNKNOWN");
  EXPECT_EQ(std::exchange(told, {}), (Log{"special /dev/tty1 there", "special /dev/tty1 offered"}));
  EXPECT_EQ(list.count(), 3u);
  EXPECT_EQ(changes, 2);
  list.refresh();
  EXPECT_EQ(std::exchange(told, {}), (Log{"/dev/tty0 offered", "special /dev/tty1 offered"}));
  bench.pull("tty0");
  EXPECT_EQ(std::exchange(told, {}), Log{"/dev/tty0 removed"});
  bench.plug("tty0", "TEST\\GADGET");  // another piece, for all that is known
  EXPECT_EQ(std::exchange(told, {}), (Log{"/dev/tty0 there", "/dev/tty0 offered"}));
  EXPECT_EQ(changes, 4);
}

TEST(HWListTest, gives_up_what_has_been_replaced_between_two_looks_under_the_same_name) {
  VirtualClock clock;
  auto owned = std::make_unique<Bench>();
  auto& bench = *owned;
  HWList list(std::move(owned));
  bench.plug("tty0", "TEST\\GADGET");
  told.clear();
  list.rescan();
  EXPECT_EQ(told, Log{}) << "the same";

  bench.records[0].instance = "2";
  list.rescan();
  EXPECT_EQ(std::exchange(told, {}), replaced) << "plugged in anew";
  bench.records[0].hardware_ids = {"TEST\\SPECIAL"};
  list.rescan();
  EXPECT_EQ(std::exchange(told, {}),
            (Log{"/dev/tty0 removed", "special /dev/tty0 there", "special /dev/tty0 offered"}));
  EXPECT_EQ(list.count(), 1u);
}

TEST(HWListTest, looks_again_at_what_has_lost_its_line) {
  VirtualClock clock;
  auto owned = std::make_unique<Bench>();
  auto& bench = *owned;
  HWList list(std::move(owned));
  bench.plug("tty0", "TEST\\GADGET");
  for (const bool comes_back : {true, false}) {
    told.clear();
    Gadget::newest->lost = true;
    for (int i = 0; i < 3; ++i) {  // it tries, and fails
      Gadget::newest->signal_lost().emit();
      clock.advance(500ms);
    }
    EXPECT_EQ(told, Log{}) << "the system may tell by itself that it has gone";
    if (comes_back) Gadget::newest->lost = false;
    clock.advance(1s);
    EXPECT_EQ(told, comes_back ? Log{} : replaced);
  }
}

TEST(HWListTest, offers_what_is_plugged_in_to_each_document_that_begins) {
  HWList::get();
  auto owned = std::make_unique<Bench>();
  owned->plug("tty0", "TEST\\GADGET");
  HWList::use_source(std::move(owned));
  told.clear();
  const auto bytes = fresh_layout().serialize();
  EXPECT_EQ(told, Log{}) << "its port is free a turn of the loop later";
  while (Glib::MainContext::get_default()->iteration(false)) continue;
  EXPECT_EQ(std::exchange(told, {}), Log{"/dev/tty0 offered"});
  ASSERT_TRUE(Layout::open_bytes("layout.zblt", bytes));
  EXPECT_EQ(told, Log{"/dev/tty0 offered"});
  Layout::get().destroy();
  HWList::use_source(make_udev_source());
}

}  // namespace
}  // namespace zemblar::test
