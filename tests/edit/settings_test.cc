// Every setting of every class is a step, comes back with what was deleted and from a copy, and is
// in the page of the layout file.

#include <glibmm/fileutils.h>
#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <sstream>

#include "core/document_class.h"
#include "core/document_text.h"
#include "devices/ecos/device_ecos.h"
#include "devices/tessara/device_tessara_bus.h"
#include "devices/tessara/device_tessara_railcom_reader.h"
#include "diagram/view_crossing.h"
#include "diagram/view_label.h"
#include "diagram/view_point.h"
#include "diagram/view_scissor.h"
#include "diagram/view_signal.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "locomotives/lok_group.h"
#include "scripts/script.h"
#include "scripts/script_registry.h"
#include "scripts/script_ui.h"
#include "simulator/soak/random_layout.h"
#include "source_dir.h"
#include "tests/edit/edit_fixture.h"
#include "track/crossing.h"
#include "track/scissor.h"
#include "track/signal.h"

namespace zemblar::test {
namespace {

/// How the railway is now, which no document has.
const std::set<std::string> running{"active", "track-power",    "scanning",
                                    "speed",  "emergency-stop", "direction",
                                    "brake",  "state",          "lok"};

struct Setting {
  std::string name;
  std::function<void()> change;  ///< to another value than the present one
};
using Settings = std::vector<Setting>;

bool other(bool value) {
  return !value;
}
Glib::ustring other(const Glib::ustring& value) {
  return value + "²";
}
std::string other(const std::string& value) {
  return value + "/nowhere.png";
}
Gdk::Color other(const Gdk::Color& value) {
  return Gdk::Color(value == Gdk::Color("red") ? "blue" : "red");
}
Address other(Address value) {
  value.set_addr(value.get_addr() + 1);
  return value;
}
DecoderType other(DecoderType value) {
  return value == DecoderType::dcc128 ? DecoderType::dcc14 : DecoderType::dcc128;
}
PointOutput::Type other(PointOutput::Type value) {
  using Type = PointOutput::Type;
  return value == Type::Servo ? Type::Basic : Type::Servo;
}
Device* other(const Device* value) {
  auto* station = dynamic_cast<Device*>(Layout::get().get_devices().child_at(0));
  return value ? nullptr : station;
}
template <typename T>
requires std::is_enum_v<T> || std::is_arithmetic_v<T> T other(T value) {
  return static_cast<T>(static_cast<int>(value) + 1);
}

/// False for a property of another type.
template <typename T>
bool add_property(Settings& all, Glib::ObjectBase& object, const GParamSpec& spec) {
  if (spec.value_type != Glib::Value<T>::value_type()) return false;
  T value{};
  object.get_property(spec.name, value);
  const std::string name = spec.name;
  all.push_back({name, [&object, name, value] { object.set_property<T>(name, other(value)); }});
  return true;
}

template <typename... T>
bool add_property_of(Settings& all, Glib::ObjectBase& object, const GParamSpec& spec) {
  return (add_property<T>(all, object, spec) || ...);
}

Settings properties_of(Glib::ObjectBase& object) {
  Settings all;
  unsigned count = 0;
  auto** specs = g_object_class_list_properties(G_OBJECT_GET_CLASS(object.gobj()), &count);
  const auto* tessara = dynamic_cast<DeviceTessara*>(&object);
  const bool on_bus = !tessara || dynamic_cast<DeviceTessaraBus*>(tessara->get_parent());
  for (unsigned i = 0; i < count; ++i) {
    const auto& spec = *specs[i];
    if (!(spec.flags & G_PARAM_WRITABLE) || running.contains(spec.name)) continue;
    if (!on_bus && spec.name == std::string("address")) continue;
    const bool known =
        add_property_of<bool, int, unsigned, std::uint8_t, double, Glib::ustring, std::string,
                        Gdk::Color, Address, Device*, Function::Type, PointOutput::Type>(
            all, object, spec);
    EXPECT_TRUE(known) << spec.name << " of " << G_OBJECT_TYPE_NAME(object.gobj())
                       << " is of a type that this test knows no second value for";
  }
  g_free(specs);
  return all;
}

void add_decoder(Settings& all, Decoder& decoder) {
  const auto add = [&]<typename T>(const char* name, T value, void (Decoder::*set)(T)) {
    all.push_back({name, [&decoder, set, value] { (decoder.*set)(other(value)); }});
  };
  add("decoder type", decoder.get_type(), &Decoder::set_type);
  add("decoder address", decoder.get_address(), &Decoder::set_address);
  add("ratio", decoder.get_speed_ratio(), &Decoder::set_speed_ratio);
  add("reverse", decoder.get_reverse(), &Decoder::set_reverse);
  add("enabled", decoder.get_commands_enabled(), &Decoder::set_commands_enabled);
  add("decoder device", decoder.get_device(),
      static_cast<void (Decoder::*)(Device*)>(&Decoder::set_device));
}

void add_lok(Settings& all, Lok& lok) {
  for (const auto* value : {"Anna", ""}) {
    all.push_back({"attribute", [&lok, value] { lok.set_attribute("Owner²", value); }});
  }
  for (const auto& decoder : lok.get_decoders()) add_decoder(all, *decoder.operator->());
}

void add_state(Settings& all, PointState& state) {
  for (const auto& held : state.get_owner()->get_outputs()) {
    auto& output = *held.operator->();
    auto setting = state.get_setting(output);
    const auto add = [&]<typename T>(const char* name, T PointStateOutput::*member) {
      auto changed = setting;
      changed.*member = static_cast<T>(other(setting.*member));
      all.push_back({name, [&state, &output, changed] { state.set_setting(output, changed); }});
    };
    auto thrown = setting;
    thrown.basic = setting.basic == 0 ? 1 : 0;
    all.push_back({"basic", [&state, &output, thrown] { state.set_setting(output, thrown); }});
    add("servo", &PointStateOutput::servo);
    add("extended", &PointStateOutput::extended);
    add("function", &PointStateOutput::function);
    add("enabled", &PointStateOutput::enabled);
  }
}

void choose_another(ScriptLine& line, unsigned arg) {
  const auto choices = line.choices(arg);
  for (const auto& choice : choices) {
    if (choice.choose && choice.text.raw() != line.get_arg_text(arg).raw()) return choice.choose();
  }
}

void change_speed(ScriptLine& line, unsigned arg) {
  struct Seven : SpeedEditor {
    SpeedArg value() const override { return {77, true}; }
  };
  line.finish_editor(arg, false, std::make_unique<Seven>());
}

void add_line(Settings& all, ScriptLine& line) {
  using Type = ScriptLine::ArgType;
  for (unsigned arg = 1; line.get_format().find("%" + std::to_string(arg)) != Glib::ustring::npos;
       ++arg) {
    const auto type = line.get_arg_type(arg);
    if (type == Type::plain) continue;
    const auto change = [&line, arg, type] {
      if (type == Type::menu) choose_another(line, arg);
      if (type == Type::number) line.set_spin_value(arg, 7);
      if (type == Type::text) line.set_text(arg, "Seven²");
      if (type == Type::custom) change_speed(line, arg);
    };
    all.push_back({"argument " + std::to_string(arg) + " of " + line.get_format().raw(), change});
  }
}

void add_script(Settings& all, Script& script) {
  all.push_back({"while", [&script] { script.set_while(!script.get_while()); }});
  for (unsigned i = 0; i < script.get_num_conditions(); ++i) {
    auto& line = *script.get_condition(i);
    all.push_back({"or", [&line] { line.set_or_flag(!line.get_or_flag()); }});
    add_line(all, line);
  }
  for (unsigned i = 0; i < script.get_num_commands(); ++i) add_line(all, *script.get_command(i));
}

void add_parts(Settings& all, Glib::ObjectBase& object) {
  for (auto& setting : properties_of(object)) all.push_back(setting);
}

/// What can be set of an object and of all below it.
void add_object(Settings& all, Object& object) {
  const auto first = all.size();
  add_parts(all, object);
  if (auto* lok = dynamic_cast<Lok*>(&object)) add_lok(all, *lok);
  if (auto* state = dynamic_cast<PointState*>(&object)) add_state(all, *state);
  if (auto* script = dynamic_cast<Script*>(&object)) add_script(all, *script);
  if (auto* point = dynamic_cast<PointBase*>(&object)) {
    for (const auto& output : point->get_outputs()) add_parts(all, *output.operator->());
  }
  if (auto* view = dynamic_cast<View*>(&object)) {
    for (const auto& drawing : view->get_objects()) add_parts(all, *drawing.operator->());
  }
  for (auto i = first; i < all.size(); ++i) all[i].name = object.get_name() + ": " + all[i].name;
  for (auto* child : object) add_object(all, *child);
}

class EverySetting : public EditTest {
 protected:
  static Settings settings() {
    Settings all;
    for (auto* toplevel : layout()) {
      for (auto* object : *toplevel) add_object(all, *object);
    }
    return all;
  }
  static void furnish(Lok& lok) {
    lok.add_decoder();
    for (int i = 0; i < 2; ++i) lok.add(new Function(&lok));
  }
  static void furnish(PointBase& point) {
    using Type = PointOutput::Type;
    for (const auto type : {Type::Extended, Type::Function, Type::Servo}) {
      auto& output = point.add_output();
      output.set_output(3);
      output.set_address(Address(Address::Kind::accessory, 90));
      output.set_type(type);
    }
    if (!point.has_fixed_states()) point.add_state();
  }
  static void furnish(Script& script) {
    for (const auto& [key, kind] : script_events()) script.add_condition(kind.create());
    for (const auto& [key, kind] : script_cmds()) script.add_command(kind.create(script));
  }
  static void furnish(DeviceTessaraBus& bus) {
    const auto entry = YAML::Load("{address: 5, serial-nr: x, inputs: [{}, {}]}");
    bus.add(new DeviceTessaraRailComReader(entry, &bus));
  }
  static void furnish(Object& object) {
    if (auto* lok = dynamic_cast<Lok*>(&object)) furnish(*lok);
    if (auto* group = dynamic_cast<LokGroup*>(&object)) furnish(*group->add(new Lok));
    if (auto* point = dynamic_cast<PointBase*>(&object)) furnish(*point);
    if (auto* script = dynamic_cast<Script*>(&object)) furnish(*script);
    if (auto* bus = dynamic_cast<DeviceTessaraBus*>(&object)) furnish(*bus);
  }
  void draw_all() {
    for (auto* object : layout().get_blocks()) {
      if (auto* zone = dynamic_cast<Zone*>(object)) draw<ViewZone>(*zone, {0, 0});
      // Alignments stand in a row, with one among them that a label does not have.
      if (auto* zone = dynamic_cast<Zone*>(object)) {
        draw<ViewLabel>(*zone, {0, 0}).set_align(Anchor::TopLeft);
      }
      if (auto* crossing = dynamic_cast<Crossing*>(object)) draw<ViewCrossing>(*crossing, {0, 0});
    }
    for (auto* object : layout().get_points()) {
      if (auto* point = dynamic_cast<Point*>(object)) draw<ViewPoint>(*point, {0, 0});
      if (auto* signal = dynamic_cast<Signal*>(object)) draw<ViewSignal>(*signal, {0, 0});
      if (auto* scissor = dynamic_cast<Scissor*>(object)) draw<ViewScissor>(*scissor, {0, 0});
    }
  }
  void make_one_of_each() {
    layout().get_devices().add(new ECoS);
    for (const auto& [tag, document_class] : document_classes()) {
      furnish(*layout().get_toplevel(document_class.section).add(document_class.make()));
    }
    draw_all();
    layout().resolve();
  }
  void expect_step(const Setting& setting) {
    SCOPED_TRACE(setting.name);
    std::vector<std::string> known{bytes()};
    act(setting.change);
    known.push_back(bytes());
    EXPECT_TRUE(known[0] != known[1]) << "the change does nothing, or no document has it";
    expect_undo(known);
    expect_redo(known);
    steps.clear();
  }
};

TEST_F(EverySetting, is_a_step_and_comes_back_with_what_was_deleted_and_from_a_copy) {
  make_one_of_each();
  // What a step brings back may be another object.
  for (std::size_t i = 0; i < settings().size() && !HasFailure(); ++i) expect_step(settings()[i]);
  const auto known = bytes();
  for (auto* toplevel : layout()) {
    for (unsigned i = 0; i < toplevel->child_count(); ++i) {
      SCOPED_TRACE(toplevel->child_at(i)->get_name());
      act([&] { toplevel->child_at(i)->destroy(); });
      ASSERT_TRUE(undo());
      EXPECT_EQ(difference(bytes(), known), "");
    }
  }
  ASSERT_TRUE(Layout::open_copy(DocumentText::whole(), true, "copy")) << get_status();
  EXPECT_EQ(difference(bytes(), known), "");
}

/// Keys by the heading of their mapping, its tag. Mappings without a tag belong to the outer one.
using Keys = std::map<std::string, std::set<std::string>>;

void add_keys(Keys& keys, const YAML::Node& node, const std::string& outer) {
  const bool has_tag = node.IsMap() && node.Tag().starts_with("!");
  const auto heading = has_tag ? "`" + node.Tag() + "`" : outer;
  for (const auto& entry : node) {
    if (node.IsSequence()) add_keys(keys, entry, heading);
    if (!node.IsMap()) continue;
    // Other keys are names and numbers of states.
    const auto& key = entry.first.Scalar();
    if (key.find_first_of(":0123456789") == key.npos) keys[heading].insert(key);
    add_keys(keys, entry.second, heading);
  }
}

/// The keys in the first column below a heading of the page, and below those to which it links.
std::set<std::string> keys_below(const std::string& heading) {
  static const auto path = ZEMBLAR_SOURCE_DIR "/docs/layout-file.md";
  static const auto page = Glib::ustring(Glib::file_get_contents(path)).lowercase().raw();
  const auto start = page.find("# " + heading + '\n');
  std::set<std::string> keys;
  if (start == page.npos) return keys;
  std::istringstream section(page.substr(start, page.find("\n#", start) - start));
  for (std::string line, key; std::getline(section, line);) {
    for (auto at = line.find("(#"); at != line.npos; at = line.find("(#", at + 1)) {
      keys.merge(keys_below(line.substr(at + 2, line.find(')', at) - at - 2)));
    }
    std::istringstream cell(line.starts_with("| `") ? line.substr(0, line.find(" |")) : "");
    while (std::getline(cell, key, '`') && std::getline(cell, key, '`')) keys.insert(key);
  }
  return keys;
}

TEST_F(EverySetting, stands_under_its_tag_in_the_page_of_the_layout_file) {
  for (const auto& [tag, known] : document_classes()) {
    if (known.in_files) furnish(*layout().get_toplevel(known.section).add(known.make()));
  }
  simulator::Chance chance(1);
  simulator::fill_at_random(chance, false);
  Keys written;
  add_keys(written, YAML::Load(layout().serialize()), "frame");
  for (const auto& [key, kind] : script_events()) written["`!script`"].insert(key);
  for (const auto& [key, kind] : script_cmds()) written["`!script`"].insert(key);
  std::set<std::string> all;
  for (const auto& [heading, keys] : written) all.insert(keys.begin(), keys.end());
  for (const auto& [heading, keys] : written) {
    const auto described = keys_below(Glib::ustring(heading).lowercase());
    for (const auto& key : keys) EXPECT_TRUE(described.contains(key)) << key << " of " << heading;
    for (const auto& key : described) EXPECT_TRUE(all.contains(key)) << key << ": not written";
  }
}

}  // namespace
}  // namespace zemblar::test
