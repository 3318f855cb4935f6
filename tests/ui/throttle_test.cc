
#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "locomotives/script_overlay.h"
#include "runtime/timer.h"
#include "tests/support/layout_fixture.h"
#include "tests/ui/keys.h"
#include "ui/throttle/func_button.h"
#include "ui/throttle/lok_controller.h"

namespace zemblar::test {
namespace {

/// Locomotives without a station: what is asked of a decoder stays marked as out of date.
class ThrottleTest : public LayoutTest {
 protected:
  ~ThrottleTest() override { layout().new_document(false); }

  static Lok* add_lok(const char* name) {
    auto* lok = layout().get_loks().add(new Lok);
    lok->set_name(name);
    return lok;
  }
  static Function* add_function(Lok* lok, unsigned number = 0) {
    auto* function = new Function(lok);
    function->set_function(number);
    return lok->add(function);
  }
  static Gtk::Window& open_window(Lok* lok) {
    auto& window = dynamic_cast<Gtk::Window&>(*LokController::open(lok).get_toplevel());
    handle_events();
    give_focus(window);
    return window;
  }
  static unsigned asked(const Lok* lok) { return lok->get_decoders().front()->state().mask; }
  static unsigned sent_speed(const Lok* lok) { return lok->get_decoders().front()->get_speed(); }
  static void expect_shown(LokController& throttle, unsigned speed) {
    EXPECT_EQ(throttle.scale().get_value(), speed);
    EXPECT_EQ(throttle.dial().get_red(), speed);
  }

  VirtualClock clock;
};

TEST_F(ThrottleTest, throttles_on_one_locomotive_follow_each_other) {
  auto* lok = add_lok("Express");
  LokController one;
  LokController other;
  one.chooser().set_object(lok);
  other.chooser().set_object(lok);
  one.scale().set_value(40.3);
  EXPECT_EQ(lok->get_speed(), 40U);
  expect_shown(other, 40);
  other.direction_button().clicked();
  EXPECT_EQ(lok->get_direction(), Direction::Reverse);
  EXPECT_EQ(one.direction_button().get_tooltip_text(), other.direction_button().get_tooltip_text());
  lok->set_speed(126);
  expect_shown(one, 126);
  expect_shown(other, 126);
}

TEST_F(ThrottleTest, an_emergency_stop_is_not_lifted_by_the_scales_that_fall_to_0) {
  auto* lok = add_lok("Express");
  LokController one;
  LokController other;
  one.chooser().set_object(lok);
  other.chooser().set_object(lok);
  other.scale().set_value(60);
  one.stop_button().clicked();
  expect_shown(one, 0);
  expect_shown(other, 0);
  EXPECT_TRUE(lok->get_emergency_stop());
  EXPECT_EQ(sent_speed(lok), DecoderUpdate::emergency_stop);
  one.stop_button().clicked();
  EXPECT_TRUE(lok->get_emergency_stop());

  LokController late;
  late.scale().set_value(80);
  late.chooser().set_object(lok);
  EXPECT_TRUE(lok->get_emergency_stop());

  other.scale().set_value(20);
  EXPECT_FALSE(lok->get_emergency_stop());
  EXPECT_EQ(sent_speed(lok), 20U);
}

TEST_F(ThrottleTest, choosing_another_locomotive_sends_nothing_to_either) {
  auto* fast = add_lok("Express");
  auto* standing = add_lok("Shunter");
  fast->set_speed(60);
  fast->set_direction(Direction::Reverse);
  add_function(standing);
  LokController throttle;
  throttle.chooser().set_object(fast);
  throttle.chooser().set_object(standing);
  expect_shown(throttle, 0);
  EXPECT_EQ(asked(standing), 0U);
  throttle.chooser().set_object(nullptr);
  throttle.scale().set_value(33);
  throttle.chooser().set_object(standing);
  EXPECT_EQ(asked(standing), 0U);
  EXPECT_EQ(fast->get_speed(), 60U);
  throttle.chooser().set_object(fast);
  expect_shown(throttle, 60);
  EXPECT_EQ(sent_speed(fast), 60U);
}

TEST_F(ThrottleTest, is_dead_without_a_locomotive_and_when_its_own_has_ended) {
  LokController throttle;
  const auto expect_dead = [&throttle] {
    EXPECT_EQ(throttle.get_lok(), nullptr);
    EXPECT_EQ(throttle.functions().get_lok(), nullptr);
    for (Gtk::Widget* control : std::initializer_list<Gtk::Widget*>{
             &throttle.dial(), &throttle.scale(), &throttle.direction_button(),
             &throttle.stop_button()}) {
      EXPECT_FALSE(control->get_sensitive());
    }
    EXPECT_FALSE(throttle.dial().get_red_visible());
    EXPECT_FALSE(throttle.dial().get_black_visible());
  };
  expect_dead();
  auto* lok = add_lok("Express");
  add_function(lok);
  lok->set_actual_speed(50);
  throttle.chooser().set_object(lok);
  EXPECT_TRUE(throttle.scale().get_sensitive());
  EXPECT_TRUE(throttle.dial().get_black_visible());
  lok->destroy();
  expect_dead();
  throttle.chooser().set_object(add_lok("Shunter"));
  layout().new_document(false);
  expect_dead();
}

TEST_F(ThrottleTest, shows_the_actual_speed_only_while_it_is_known) {
  auto* lok = add_lok("Express");
  LokController throttle;
  throttle.chooser().set_object(lok);
  EXPECT_TRUE(throttle.dial().get_red_visible());
  EXPECT_FALSE(throttle.dial().get_black_visible());
  lok->set_actual_speed(101);
  EXPECT_TRUE(throttle.dial().get_black_visible());
  EXPECT_EQ(throttle.dial().get_black(), 99U);
  throttle.chooser().set_object(add_lok("Shunter"));
  EXPECT_FALSE(throttle.dial().get_black_visible());
}

/// A pointer on the scale of a throttle.
class ScalePointer {
 public:
  explicit ScalePointer(LokController& throttle) : scale_(GTK_WIDGET(throttle.scale().gobj())) {}

  void send(GdkEventType type, double y, unsigned button = 1) {
    GdkEvent event{};
    event.type = type;
    event.any.window = scale_->window;
    if (type == GDK_MOTION_NOTIFY) {
      event.motion.x = scale_->allocation.width / 2;
      event.motion.y = y;
    } else {
      event.button.button = button;
      event.button.x = scale_->allocation.width / 2;
      event.button.y = y;
    }
    gtk_widget_event(scale_, &event);
  }
  void click(double y, unsigned button = 1) {
    send(GDK_BUTTON_PRESS, y, button);
    send(GDK_BUTTON_RELEASE, y, button);
  }
  [[nodiscard]] double middle() const {
    int start = 0, end = 0;
    gtk_range_get_slider_range(GTK_RANGE(scale_), &start, &end);
    return (start + end) / 2.0;
  }
  [[nodiscard]] double bottom() const { return scale_->allocation.height; }

 private:
  GtkWidget* scale_;
};

TEST_F(ThrottleTest, a_pointer_or_a_key_that_is_held_lets_go_of_a_train_that_is_stopped) {
  auto* lok = add_lok("Express");
  auto& window = open_window(lok);
  ScalePointer pointer(get_widget<LokController>(window));
  const double middle = pointer.middle();
  pointer.send(GDK_BUTTON_PRESS, middle);
  pointer.send(GDK_MOTION_NOTIFY, middle - 30);
  EXPECT_GT(lok->get_speed(), 0u);
  lok->set_emergency_stop(true);
  pointer.send(GDK_MOTION_NOTIFY, middle - 40);
  EXPECT_TRUE(lok->get_emergency_stop());
  press_key(window, GDK_KEY_Up);
  EXPECT_EQ(lok->get_speed(), 1U);
  lok->set_emergency_stop(true);
  press_key(window, GDK_KEY_Up);
  EXPECT_TRUE(lok->get_emergency_stop()) << "it repeats while it is held";
  press_key(window, GDK_KEY_Up, 0, GDK_KEY_RELEASE);
  press_key(window, GDK_KEY_Up);
  EXPECT_EQ(lok->get_speed(), 1U);
  window.hide();
  handle_events();
}

TEST_F(ThrottleTest, a_press_beside_the_slider_moves_by_a_page_and_speeds_are_whole_numbers) {
  auto* lok = add_lok("Express");
  auto& window = open_window(lok);
  auto& throttle = get_widget<LokController>(window);
  ScalePointer pointer(throttle);
  auto* settings = gtk_settings_get_default();
  for (const bool theme_jumps : {true, false}) {
    SCOPED_TRACE(theme_jumps);
    g_object_set(settings, "gtk-primary-button-warps-slider", gboolean{theme_jumps}, nullptr);
    throttle.scale().set_value(60);
    const std::pair<double, unsigned> clicks[] = {{10, 70}, {pointer.bottom() - 10, 60}};
    for (const auto& [y, speed] : clicks) {
      pointer.click(y);
      EXPECT_EQ(lok->get_speed(), speed);
    }
    pointer.click(10, 2);
    EXPECT_EQ(throttle.scale().get_value(), 60);
    // The second press of a double click, and another button meanwhile.
    pointer.send(GDK_BUTTON_PRESS, pointer.middle() - 30);
    pointer.send(GDK_2BUTTON_PRESS, pointer.middle());
    pointer.send(GDK_BUTTON_PRESS, 10, 3);
    pointer.send(GDK_BUTTON_RELEASE, pointer.middle());
    EXPECT_EQ(throttle.scale().get_value(), 70);
    EXPECT_FALSE(throttle.scale().has_grab()) << "it would go on to the end";
    throttle.scale().set_value(60);
    const double from = pointer.middle();
    pointer.send(GDK_BUTTON_PRESS, from);
    for (int way = 1; way < 20; ++way) {
      pointer.send(GDK_MOTION_NOTIFY, from - way);
      EXPECT_EQ(throttle.scale().get_value(), lok->get_speed());
    }
    EXPECT_GT(lok->get_speed(), 60U);
    pointer.send(GDK_BUTTON_RELEASE, from);
  }
  window.hide();
}

TEST_F(ThrottleTest, keys_stop_the_train_and_press_the_functions_of_their_numbers) {
  auto* lok = add_lok("Express");
  for (const unsigned number : {1U, 3U, 13U, 20U, 28U}) add_function(lok, number);
  auto& window = open_window(lok);
  const auto pressed = [&] {
    std::string numbers;
    for (auto* child : *lok) {
      auto& function = dynamic_cast<Function&>(*child);
      if (function.get_state()) numbers += std::to_string(function.get_function()) + " ";
      function.set_state(false);
    }
    return numbers;
  };
  struct Case {
    guint key;
    unsigned modifiers;
    const char* function;
  };
  for (const auto& [key, modifiers, function] :
       {Case{GDK_KEY_3, 0, "3 "}, Case{GDK_KEY_KP_3, 0, "3 "}, Case{GDK_KEY_numbersign, 0, "13 "},
        Case{GDK_KEY_KP_Page_Down, GDK_SHIFT_MASK | GDK_MOD2_MASK, "13 "},
        Case{GDK_KEY_KP_End, GDK_SHIFT_MASK | GDK_MOD2_MASK, ""},
        Case{GDK_KEY_0, GDK_CONTROL_MASK, "20 "}, Case{GDK_KEY_8, GDK_CONTROL_MASK, "28 "},
        Case{GDK_KEY_9, GDK_CONTROL_MASK, ""}, Case{GDK_KEY_2, 0, ""},
        Case{GDK_KEY_1, GDK_MOD1_MASK, ""}, Case{GDK_KEY_a, 0, ""}}) {
    press_key(window, key, modifiers);
    EXPECT_EQ(pressed(), function) << gdk_keyval_name(key) << " with " << modifiers;
    EXPECT_EQ(lok->get_speed(), 0U);
  }
  for (const unsigned modifiers : {0U, unsigned{GDK_CONTROL_MASK}, unsigned{GDK_SHIFT_MASK}}) {
    lok->set_speed(10);
    press_key(window, GDK_KEY_space, modifiers);
    EXPECT_TRUE(lok->get_emergency_stop()) << modifiers;
  }
  window.hide();
}

TEST_F(ThrottleTest, arrows_drive_in_the_scale_and_choose_among_the_functions) {
  auto* lok = add_lok("Express");
  auto& window = open_window(lok);
  auto& throttle = get_widget<LokController>(window);
  EXPECT_TRUE(throttle.scale().is_focus()) << "a chosen locomotive is to be driven";
  struct Step {
    guint key;
    unsigned speed;
    unsigned modifiers = 0;
  };
  for (const auto& [key, speed, modifiers] :
       {Step{GDK_KEY_Up, 1}, Step{GDK_KEY_Right, 2}, Step{GDK_KEY_Page_Up, 12},
        Step{GDK_KEY_Down, 11}, Step{GDK_KEY_Left, 10}, Step{GDK_KEY_Page_Down, 0},
        Step{GDK_KEY_Right, 10, GDK_CONTROL_MASK}, Step{GDK_KEY_Left, 0, GDK_CONTROL_MASK},
        Step{GDK_KEY_Up, 1}, Step{GDK_KEY_End, 1}, Step{GDK_KEY_KP_End, 1},
        Step{GDK_KEY_Home, 0}}) {
    press_key(window, key, modifiers);
    EXPECT_EQ(lok->get_speed(), speed) << gdk_keyval_name(key);
  }

  // One wide button, two half ones, a row of four.
  std::vector<Function*> functions;
  for (unsigned number = 0; number < 7; ++number) functions.push_back(add_function(lok, number));
  throttle.functions().grab_focus();
  struct Move {
    guint key;
    std::size_t marked;
  };
  for (const auto& [key, marked] :
       {Move{GDK_KEY_Right, 1}, Move{GDK_KEY_Right, 2}, Move{GDK_KEY_Down, 5},
        Move{GDK_KEY_Right, 6}, Move{GDK_KEY_Right, 6}, Move{GDK_KEY_Up, 2}, Move{GDK_KEY_Left, 1},
        Move{GDK_KEY_Down, 3}, Move{GDK_KEY_Home, 0}, Move{GDK_KEY_End, 6}}) {
    press_key(window, key);
    press_key(window, GDK_KEY_Return);
    for (std::size_t i = 0; i < functions.size(); ++i) {
      EXPECT_EQ(functions[i]->get_state(), i == marked) << gdk_keyval_name(key) << ", " << i;
    }
    press_key(window, GDK_KEY_KP_Enter);
    EXPECT_FALSE(functions[marked]->get_state());
  }
  EXPECT_EQ(throttle.functions().get_accessible()->get_description(), "Function 7");
  press_key(window, GDK_KEY_Tab);
  EXPECT_FALSE(throttle.functions().is_focus()) << "they are one stop of Tab";
  functions.back()->destroy();
  press_key(window, GDK_KEY_Tab, GDK_SHIFT_MASK);
  EXPECT_TRUE(throttle.functions().is_focus());
  press_key(window, GDK_KEY_Return);
  EXPECT_TRUE(functions.front()->get_state()) << "the one that was marked has ended";
  while (!lok->empty()) (*lok->begin())->destroy();
  press_key(window, GDK_KEY_Down);
  window.hide();
}

TEST_F(ThrottleTest, functions_that_are_higher_than_the_screen_scroll_and_the_marked_one_is_seen) {
  auto* lok = add_lok("Express");
  for (unsigned number = 0; number < 190; ++number) add_function(lok, number % 29);
  auto& window = open_window(lok);
  const int screen = window.get_screen()->get_height();
  for (unsigned number = 0; number < 10; ++number) add_function(lok, number);
  handle_events();
  EXPECT_LT(window.get_height(), screen);
  auto& functions = get_widget<LokController>(window).functions();
  functions.grab_focus();
  for (const auto key : {GDK_KEY_End, GDK_KEY_Home}) {
    press_key(window, key);
    const auto shown = functions.buttons();
    auto& marked = key == GDK_KEY_End ? *shown.back() : *shown.front();
    const auto is_in_sight = [&] {
      int top = 0;
      int left = 0;
      marked.translate_coordinates(window, 0, 0, left, top);
      return top >= 0 && top + marked.get_height() <= window.get_height();
    };
    // The display may still be giving the window its size.
    for (int i = 0; i < 200 && !is_in_sight(); ++i) handle_events(), g_usleep(10'000);
    EXPECT_TRUE(is_in_sight()) << gdk_keyval_name(key);
  }
  window.hide();
}

TEST_F(ThrottleTest, a_window_that_is_closed_ends_with_its_throttle) {
  auto* lok = add_lok("Express");
  auto& throttle = LokController::open(lok);
  auto* window = dynamic_cast<Gtk::Window*>(throttle.get_toplevel());
  ASSERT_NE(window, nullptr);
  EXPECT_EQ(window->get_title(), "Throttle");
  bool ended = false;
  throttle.add_destroy_notify_callback(&ended, [](void* flag) -> void* {
    *static_cast<bool*>(flag) = true;
    return nullptr;
  });
  handle_events();
  // As the window manager closes it.
  gtk_main_do_event(make_event(GDK_DELETE, window->get_window()->gobj()).get());
  handle_events();
  EXPECT_TRUE(ended);
  lok->set_speed(20);
  EXPECT_EQ(lok->get_speed(), 20U);
}

TEST_F(ThrottleTest, a_function_that_a_script_switches_is_shown_but_not_kept) {
  auto* function = add_function(add_lok("Express"));
  LokController throttle;
  throttle.chooser().set_object(function->get_lok());
  auto& button = *throttle.functions().buttons().front();
  {
    ScriptOverlay overlay;
    overlay.states[function] = true;
    function->apply_state_overlay();
    EXPECT_TRUE(button.get_active());
    EXPECT_FALSE(function->get_state());
    // The script outranks the person until it ends.
    button.set_active(false);
    EXPECT_TRUE(button.get_active());
  }
  function->apply_state_overlay();
  EXPECT_FALSE(button.get_active());
  button.set_active(true);
  EXPECT_TRUE(function->get_state());
}

TEST_F(ThrottleTest, the_button_of_a_pulse_drops_back_at_once) {
  auto* function = add_function(add_lok("Express"), 2);
  function->set_type(Function::Type::Pulse);
  LokController throttle;
  throttle.chooser().set_object(function->get_lok());
  auto& button = *throttle.functions().buttons().front();
  const auto& decoder = *function->get_lok()->get_decoders().front().operator->();
  button.clicked();
  EXPECT_FALSE(button.get_active());
  EXPECT_EQ(decoder.state().functions, 1U << 2);
  clock.advance(std::chrono::milliseconds(200));
  EXPECT_EQ(decoder.state().functions, 0U);
}

/// One line per row of the table, each button by the columns that it fills: "0123 01|23".
std::string cells(FuncTable& table) {
  std::string text;
  guint row = 0;
  for (auto* button : table.buttons()) {
    guint left = 0;
    guint right = 0;
    guint top = 0;
    gtk_container_child_get(GTK_CONTAINER(table.gobj()), GTK_WIDGET(button->gobj()), "left-attach",
                            &left, "right-attach", &right, "top-attach", &top, nullptr);
    if (!text.empty()) text += top == row ? '|' : ' ';
    row = top;
    while (left < right) text += static_cast<char>('0' + left++);
  }
  return text;
}

TEST_F(ThrottleTest, the_rows_of_function_buttons_are_always_full) {
  const char* const expected[] = {"",
                                  "0123",
                                  "01|23",
                                  "0123 01|23",
                                  "0|1|2|3",
                                  "0123 0|1|2|3",
                                  "01|23 0|1|2|3",
                                  "0123 01|23 0|1|2|3",
                                  "0|1|2|3 0|1|2|3",
                                  "0123 0|1|2|3 0|1|2|3"};
  auto* lok = add_lok("Express");
  FuncTable table;
  table.set_lok(lok);
  for (const char* const row : expected) {
    EXPECT_EQ(cells(table), row);
    guint rows = 0;
    g_object_get(table.gobj(), "n-rows", &rows, nullptr);
    EXPECT_EQ(rows, *row ? 1U + static_cast<guint>(std::count(row, row + strlen(row), ' ')) : 1U);
    add_function(lok);
  }
  while (!lok->empty()) (*lok->begin())->destroy();
  EXPECT_EQ(cells(table), "");
}

TEST_F(ThrottleTest, the_function_table_follows_what_is_added_removed_and_hidden) {
  auto* lok = add_lok("Express");
  auto* light = add_function(lok);
  FuncTable table;
  table.set_lok(lok);
  auto* horn = add_function(lok);
  auto* bell = add_function(lok);
  const auto shown = [&table] {
    std::vector<Function*> functions;
    for (auto* button : table.buttons()) functions.push_back(button->get_function());
    return functions;
  };
  using Functions = std::vector<Function*>;
  EXPECT_EQ(shown(), (Functions{light, horn, bell}));
  horn->set_hidden(true);
  EXPECT_EQ(shown(), (Functions{light, bell}));
  EXPECT_EQ(cells(table), "01|23");
  light->destroy();
  EXPECT_EQ(shown(), (Functions{bell}));
  horn->set_hidden(false);
  EXPECT_EQ(shown(), (Functions{horn, bell}));
}

/// The red share of a pixel over its green one, from a picture of the dial.
int redness(Dial& dial, int x, int y) {
  auto* picture = gtk_widget_get_snapshot(GTK_WIDGET(dial.gobj()), nullptr);
  auto* pixbuf = gdk_pixbuf_get_from_drawable(nullptr, picture, nullptr, x, y, 0, 0, 1, 1);
  const auto* pixel = gdk_pixbuf_get_pixels(pixbuf);
  const int difference = pixel[0] - pixel[1];
  g_object_unref(pixbuf);
  g_object_unref(picture);
  return difference;
}

TEST_F(ThrottleTest, the_red_needle_turns_about_the_middle_of_the_dial) {
  Gtk::Window window;
  Dial dial;
  window.add(dial);
  window.show_all();
  handle_events();
  // On the needle's way out, and on its short tail.
  struct Case {
    unsigned speed;
    int x;
    int y;
  };
  for (const auto& [speed, x, y] : {Case{63, 120, 75}, Case{63, 120, 140}, Case{0, 88, 152},
                                    Case{126, 152, 152}, Case{21, 75, 120}, Case{105, 165, 120}}) {
    dial.set_red(speed);
    EXPECT_GT(redness(dial, x, y), 60) << speed;
    dial.set_red_visible(false);
    EXPECT_LT(redness(dial, x, y), 60) << speed;
    dial.set_red_visible(true);
  }
}

}  // namespace
}  // namespace zemblar::test
