#pragma once

#include <pangomm/layout.h>

#include "diagram/anchor.h"
#include "diagram/view_object.h"
#include "runtime/scoped_connection.h"
#include "track/zone.h"

namespace zemblar {

class Lok;

/// Shows the name of the locomotive in a zone, and its speed if RailCom reports one. Without a
/// locomotive it shows nothing; an editor always shows the zone's name instead.
///
/// A note about the locomotive, for example why it is held, is a separate line on the far side of
/// the name, whose position does not change. The label updates the note at each pulse of the
/// layout, not at the brake's notification: that comes before the stop is sent, and must not be
/// delayed by composing a sentence.
///
/// In a layout file: `zone`, `pos`, and `align` in capitals, the side of the text that lies at the
/// place.
class ViewLabel : public ViewObj {
 public:
  /// A new one at a place.
  ViewLabel(Zone& zone, const Vector& place);
  explicit ViewLabel(const YAML::Node& node);

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] zemblar::Object* get_object() const override { return zone_; }
  [[nodiscard]] PixelBox runtime_box(const Context& context) override;
  void show_menu(const ViewTag& tag, guint32 time) override;

  /// Any value but Centre.
  [[nodiscard]] Anchor get_align() const { return align_; }
  void set_align(Anchor align);
  /// The text that the operating display shows now.
  [[nodiscard]] const Glib::ustring& get_text() const { return text_; }
  /// The line of the note; empty without a note.
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
  /// A text with its place and size, in diagram units.
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
