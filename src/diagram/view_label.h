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

  Glib::PropertyProxy<int> property_align() { return {this, "align"}; }

 protected:
  void move_by(const Vector& delta) override { pos_ += delta; }
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
  [[nodiscard]] Glib::RefPtr<Pango::Layout> lay_out(const Context& context,
                                                    const Glib::ustring& text) const;
  [[nodiscard]] Vector origin(const Pango::Rectangle& extents) const;
  void draw_text(const Context& context, const Glib::ustring& text) const;

  Zone* zone_ = nullptr;
  Vector pos_;
  Anchor align_ = Anchor::Bottom;
  Glib::ustring text_;
  ScopedConnection lok_changed_;
  ScopedConnection renamed_;
  std::vector<ScopedConnection> lok_signals_;
};

}  // namespace zemblar
