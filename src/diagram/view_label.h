#pragma once

#include <pangomm/layout.h>

#include "diagram/anchor.h"
#include "diagram/view_object.h"
#include "runtime/scoped_connection.h"
#include "track/zone.h"

namespace zemblar {

class Lok;

/// The name of the locomotive in a zone, and its speed if the track reports that. Without a
/// locomotive nothing is shown; an editor shows the zone's name in its place.
///
/// A note about the locomotive, such as why it is held, stands in a line of its own on the far side
/// of the name, which stays where it is. The label looks for a note with each pulse of the layout:
/// the brake's notification comes before the stop is sent, and must not wait for a sentence.
///
/// In a layout file: `zone`, `pos` and `align`, the side of the text that lies at the place, in
/// capitals.
class ViewLabel : public ViewObj {
 public:
  /// A new one at a place.
  ViewLabel(Zone& zone, const Vector& place);
  explicit ViewLabel(const YAML::Node& node);

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] zemblar::Object* get_object() const override { return zone_; }
  [[nodiscard]] PixelBox runtime_box(const Context& context) override;
  void show_menu(const ViewTag& tag, guint32 time) override;

  /// Any but the centre.
  [[nodiscard]] Anchor get_align() const { return align_; }
  void set_align(Anchor align);
  /// What the operating display shows now.
  [[nodiscard]] const Glib::ustring& get_text() const { return text_; }
  /// The line beside it; empty while there is nothing to say.
  [[nodiscard]] const Glib::ustring& get_note() const { return note_; }

  Glib::PropertyProxy<int> property_align() { return {this, "align"}; }

 protected:
  void move_by(const Vector& delta) override { pos_ = on_grid(pos_ + delta, 0); }
  [[nodiscard]] Vector get_place() override { return pos_; }
  void draw_plain(const Context& context, bool selected) override;
  void draw_live(const Context& context) override;
  void draw_body_tags(const Context& context, bool selected, SelectionTable& table) override;

 private:
  ViewLabel();
  void attach(Zone& zone);
  void follow_lok();
  void follow();
  [[nodiscard]] Glib::ustring live_text() const;
  [[nodiscard]] int get_align_number() const { return static_cast<int>(align_); }
  void set_align_number(int align);
  /// A text with its place, in the diagram's units.
  struct TextBlock {
    Glib::RefPtr<Pango::Layout> layout{};
    Vector corner{};
    Vector size{};
  };
  [[nodiscard]] static TextBlock lay_out(const Context& context, const Glib::ustring& text,
                                         const char* font);
  [[nodiscard]] TextBlock name_block(const Context& context, const Glib::ustring& text) const;
  [[nodiscard]] TextBlock note_block(const Context& context, const TextBlock& name) const;
  static void draw_words(const Context& context, const TextBlock& block);

  Zone* zone_ = nullptr;
  Vector pos_;
  Anchor align_ = Anchor::Bottom;
  Glib::ustring text_;
  Glib::ustring note_;
  ScopedConnection pulse_;
  ScopedConnection zone_ended_;
  ScopedConnection lok_changed_;
  ScopedConnection renamed_;
  std::vector<ScopedConnection> lok_signals_;
};

}  // namespace zemblar
