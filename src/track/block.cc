#include "track/block.h"

#include <algorithm>
#include <utility>

#include "core/alive_guard.h"
#include "core/collections.h"
#include "core/property.h"
#include "devices/device.h"
#include "locomotives/lok.h"

namespace zemblar {
namespace {

const MemberSet::Membership membership(
    MemberKind::block,
    [](const Object* object) { return dynamic_cast<const Block*>(object) != nullptr; },
    [](Object& member, MemberSet& set) {
      auto& block = dynamic_cast<Block&>(member);
      block.signal_occupied().connect(
          sigc::track_obj([&set] { set.signal_changed().emit(); }, set));
      block.signal_lok_changed().connect(
          sigc::track_obj([&set] { set.signal_lok_changed().emit(); }, set));
    });

}  // namespace

Block::Block(const Glib::ustring& name_format) : Object(name_format) {
  register_property<Device*>(this, "input", &Block::get_input, &Block::set_input);
  register_property<bool>(this, "invert", &Block::get_invert, &Block::set_invert);
  register_property<Lok*>(this, "lok", &Block::get_lok, &Block::replace_lok);
}

Block::~Block() {
  if (lok_) lok_->forget_block(this);
}

sigc::signal<void, Block*>& Block::signal_ending() {
  static sigc::signal<void, Block*> signal;
  return signal;
}

sigc::signal<void, BlockLink*>& Block::signal_link_ending() {
  static sigc::signal<void, BlockLink*> signal;
  return signal;
}

// From now on a report cannot place a locomotive here, and walks along the track end before this
// block.
void Block::on_deleting() {
  signal_ending().emit(this);
  for (auto& connection : input_signals_) connection.disconnect();
  const auto links = links_;
  for (auto* link : links) link->disconnect();
  reservations_.end_all();
  if (lok_) replace_lok(nullptr);
}

// --- Detector ---

void Block::set_input(Device* input) {
  if (input == input_ || is_deleting()) return;
  before_change();
  input_ = input;
  for (auto& connection : input_signals_) connection.disconnect();
  input_deleted_.disconnect();
  if (!input) {
    notify_property(*this, "input");
    return;
  }
  input_signals_ = {input->signal_changed().connect(sigc::mem_fun(*this, &Block::on_occupied)),
                    input->signal_arrived().connect(sigc::mem_fun(*this, &Block::on_detected)),
                    input->signal_left().connect(sigc::mem_fun(*this, &Block::on_lost))};
  input_deleted_ = input->signal_deleted().connect([this] { set_input(nullptr); });
  notify_property(*this, "input");
  // A handler may end the block, change the detector, or end a detected locomotive.
  const AliveGuard alive(*this);
  on_occupied();
  const auto still = [&] { return alive && input_ == input; };
  for (auto* lok : still() ? input->detected() : std::vector<Lok*>()) {
    if (!still()) return;
    const auto now = input->detected();
    if (std::ranges::find(now, lok) != now.end()) on_detected(lok);
  }
}

bool Block::occupied() const {
  return input_ && input_->occupied();
}

std::vector<Lok*> Block::detections() const {
  return input_ ? input_->detected() : std::vector<Lok*>();
}

void Block::on_occupied() {
  const AliveGuard alive(*this);
  reservations_.look();
  if (alive) signal_occupied_.emit();
}

void Block::on_detected(Lok* lok) {
  signal_detected_.emit(lok);
}

void Block::on_lost(Lok* lok) {
  signal_lost_.emit(lok);
}

void Block::set_invert(bool invert) {
  if (invert == invert_) return;
  before_change();
  invert_ = invert;
  notify_property(*this, "invert");
}

// --- Holder ---

// A block that somebody waits for has its next holder before scripts hear that it is released: for
// them it has never been free.
void Block::set_holder(Lok* lok) {
  if (lok_) lok_->forget_block(this);
  lok_ = lok;
  if (lok_) lok_->remember_block(this);
  const AliveGuard alive(*this);
  notify_property(*this, "lok");
  if (alive) reservations_.look();
  if (alive) signal_lok_changed_.emit();
}

void Block::set_lok(Lok* lok) {
  if (lok && !lok_ && !lok->is_deleting() && !is_deleting()) set_holder(lok);
}

void Block::clear_lok(Lok* lok) {
  if (lok && lok_ == lok && !reservations_.keeps_for(*lok)) set_holder(nullptr);
}

void Block::leave(Lok* lok) {
  const AliveGuard alive(*this);
  const AliveGuard lok_lives(*lok);
  reservations_.let_pass(*lok);
  if (alive && lok_lives) clear_lok(lok);
}

void Block::replace_lok(Lok* lok) {
  if (lok == lok_ || (lok && (lok->is_deleting() || is_deleting()))) return;
  set_holder(lok);
}

}  // namespace zemblar
