#include <gtest/gtest.h>
#include <yaml-cpp/yaml.h>

#include <sstream>

#include "core/address.h"
#include "core/dimension.h"
#include "core/direction.h"
#include "core/string_pool.h"
#include "core/yaml_io.h"

namespace zemblar::test {
namespace {

TEST(Address, tells_types_apart_and_sorts_by_type_first) {
  const Address short3(3);
  const Address long3(3, true);
  const Address accessory3(Address::Kind::accessory, 3);
  const Address output3(Address::Kind::output, 3);
  EXPECT_TRUE(short3 < Address(127) && Address(127) < long3 && long3 < accessory3 &&
              accessory3 < output3);
  EXPECT_FALSE(Address(127).is_long());
  EXPECT_TRUE(Address(128).is_long());
  EXPECT_EQ(Address(10239).get_addr(), 10239u);
}

TEST(Address, changes_within_the_ranges_of_its_type) {
  Address address(5000);
  address.set_long(false);
  EXPECT_EQ(address, Address(127));
  address.set_addr(200);
  EXPECT_EQ(address, Address(200, true));
  address.set_addr(5);
  EXPECT_EQ(address, Address(5, true));
  address.set_kind(Address::Kind::mobile);  // re-typed by its number
  EXPECT_EQ(address, Address(5, false));
  address = Address(700);
  address.set_kind(Address::Kind::accessory);
  EXPECT_EQ(address, Address(Address::Kind::accessory, 512));
  address = Address(10239);
  address.set_kind(Address::Kind::output);
  EXPECT_EQ(address, Address(Address::Kind::output, 2048));
}

TEST(AddressDeathTest, refuses_numbers_outside_the_range) {
  EXPECT_DEATH(Address(0), "addr > 0");
  EXPECT_DEATH(Address(10240), "addr < 10240");
  EXPECT_DEATH(Address(128, false), "addr <= 127");
  EXPECT_DEATH(Address(Address::Kind::accessory, 513), "addr <= 512");
  EXPECT_DEATH(Address(Address::Kind::output, 3).set_addr(2049), "addr <= 2048");
  EXPECT_DEATH(Address(Address::Kind::output, 3).set_long(true), "TYPE_MASK");
}

TEST(Address, is_written_so_that_it_reads_back) {
  std::ostringstream shown;
  shown << Address(5, true) << " " << Address(200);
  EXPECT_EQ(shown.str(), "!long 5 200");
  for (const auto address : {Address(5), Address(5, true), Address(127, true), Address(10239)}) {
    YAML::Emitter out;
    out << address;
    Address read;
    YAML::Load(out.c_str()) >> read;
    EXPECT_EQ(read, address) << out.c_str();
  }
  Address address;
  for (const auto* bad :
       {"0", "10240", "-3", "0x10", "3.0", "~", "[3]", "!short 3", "99999999999", "!long 0"}) {
    EXPECT_THROW(YAML::Load(bad) >> address, YAML::InvalidScalar) << bad;
  }
  YAML::Load("'77'") >> address;
  EXPECT_EQ(address, Address(77)) << "in quotes";
  EXPECT_THROW(read_address(YAML::Load("513"), Address::Kind::accessory, address),
               YAML::InvalidScalar);
}

TEST(Direction, reads_its_two_words_only) {
  Direction direction = Direction::Forwards;
  YAML::Load("Reverse") >> direction;
  EXPECT_EQ(direction, Direction::Reverse);
  EXPECT_THROW(YAML::Load("reverse") >> direction, YAML::InvalidScalar);
  EXPECT_THROW(YAML::Load("~") >> direction, YAML::InvalidScalar);
}

TEST(Dimension, takes_the_number_as_having_been_in_the_new_unit) {
  Dimension length;
  length.set_units(Units::metres);
  length.SetValue(1.0);
  EXPECT_EQ(length.get_value_mm(), 1000);
  length.set_units(Units::centimetres);
  EXPECT_EQ(length.get_value(), 1.0);
  EXPECT_EQ(length.get_value_mm(), 10);
  length.set_value_mm(254);
  EXPECT_EQ(length.get_value(), 25.4);
  int told = 0;
  length.property_value().signal_changed().connect([&] { ++told; });
  length.SetValue(25.4);
  EXPECT_EQ(told, 0);
}

TEST(Scalars, are_read_by_their_digits_whatever_the_locale) {
  unsigned number = 0;
  for (const auto* bad : {"010x", "0x10", "+5", "-1", "4294967296", "", "~", "1.0"}) {
    EXPECT_THROW(YAML::Load(bad) >> number, YAML::InvalidScalar) << bad;
  }
  YAML::Load("010") >> number;
  EXPECT_EQ(number, 10u);
  double ratio = 0;
  for (const auto* bad : {"nan", ".inf", "1,5", "x"}) {
    EXPECT_THROW(YAML::Load(bad) >> ratio, YAML::InvalidScalar) << bad;
  }
  Glib::ustring text;
  EXPECT_THROW(YAML::Load("~") >> text, YAML::InvalidScalar);
}

TEST(StringPool, fires_when_the_set_of_strings_changes_and_not_for_counts) {
  StringPool pool;
  int fired = 0;
  pool.signal_changed().connect([&] { ++fired; });
  pool.add("Light");
  pool.add("Horn");
  pool.add("Light");
  EXPECT_EQ(fired, 2);
  EXPECT_EQ(pool.get_all(), (std::vector<Glib::ustring>{"Horn", "Light"}));
  pool.remove("Light");
  EXPECT_TRUE(pool.contains("Light"));
  EXPECT_EQ(fired, 2);
  pool.remove("Light");
  EXPECT_FALSE(pool.contains("Light"));
  EXPECT_EQ(fired, 3);

  pool.add("Epoch", "III");
  pool.add("Epoch", "IV");
  EXPECT_EQ(fired, 4);
  EXPECT_EQ(pool.get_all("Epoch"), (std::vector<Glib::ustring>{"III", "IV"}));
  pool.remove("Epoch", "III");
  EXPECT_EQ(pool.get_all("Epoch"), (std::vector<Glib::ustring>{"IV"}));
  pool.remove("Epoch", "IV");
  EXPECT_FALSE(pool.contains("Epoch"));
  EXPECT_TRUE(pool.get_all("Epoch").empty());
}

TEST(StringPoolDeathTest, insists_that_each_removal_had_its_addition) {
  StringPool pool;
  EXPECT_DEATH(pool.remove("x"), "iter != str_list.end()");
  pool.add("x", "sub");
  EXPECT_DEATH(pool.remove("x"), "sub_list.find\\(str\\) == sub_list.end\\(\\)");
  EXPECT_DEATH(pool.remove("y", "sub"), "iter1 != sub_list.end()");
  EXPECT_DEATH(pool.remove("x", "other"), "iter2 != iter1->second.end()");
}

}  // namespace
}  // namespace zemblar::test
