#include "ui/panels/block_properties.h"

#include "core/i18n.h"
#include "core/property.h"
#include "core/toplevel.h"
#include "devices/device.h"
#include "locomotives/lok.h"
#include "track/crossing.h"
#include "track/zone.h"
#include "ui/toolkit/new_button.h"
#include "ui/toolkit/update_guard.h"

namespace zemblar {
namespace {

/// The panel of all zones and crossings.
class BlockToplevelProperties : public Form {
 public:
  BlockToplevelProperties(BlockToplevel& blocks, const Labels& labels) : Form(labels) {
    add_new_button<Zone>(*this, _("New _Zone"), blocks);
    add_new_button<Crossing>(*this, _("New _Crossing"), blocks);
  }
};

const PanelRegistration<Zone, ZoneProperties> zone_registration;
const PanelRegistration<Crossing, CrossingProperties> crossing_registration;
const PanelRegistration<BlockToplevel, BlockToplevelProperties> toplevel_registration;

ObjectChoices detector_choices() {
  auto choices = device_choices("Occupancy");
  choices.heading = _("Detectors");
  choices.how_to_make = _("No detector yet: make a reader under Devices");
  return choices;
}

}  // namespace

BlockRows::BlockRows(Block& block)
    : block_(&block), detector_(detector_choices()), lok_(lok_choices()) {
  detector_.explain(_("What tells whether the block is occupied. Neighbours may share one"));
  lok_.explain(
      _("The locomotive that holds this block. Choose (None) to free a block that is stuck, "
        "because its locomotive was taken off the track"));
  follow();
  detector_.property_object().signal_changed().connect([this] {
    if (block_ && !updating_) block_->set_input(dynamic_cast<Device*>(detector_.get_object()));
  });
  lok_.property_object().signal_changed().connect([this] {
    if (block_ && !updating_) block_->replace_lok(dynamic_cast<Lok*>(lok_.get_object()));
  });
  input_changed_ = block.property_input().signal_changed().connect([this] { follow(); });
  lok_changed_ = block.signal_lok_changed().connect([this] { follow(); });
}

void BlockRows::add_to(Form& form) {
  form.add_row(_("_Detector:"), detector_);
  form.add_row(_("_Locomotive:"), lok_);
}

void BlockRows::follow() {
  if (!block_) return;
  const UpdateGuard scope(updating_);
  detector_.set_object(block_->get_input());
  lok_.set_object(block_->get_lok());
}

ZoneProperties::ZoneProperties(Zone& zone, const Labels& labels)
    : Form(labels), name_(zone), rows_(zone), swap_(_("_Swap RailCom Orientation"), true) {
  add_row(_("_Name:"), name_);
  rows_.add_to(*this);
  add_field(swap_);
  swap_.set_tooltip_text(
      _("For a detector that is connected the other way round: the locomotive is shown standing "
        "the wrong way. Counts from the next detection"));
  bind_property(zone, "invert", swap_, "active");
}

CrossingProperties::CrossingProperties(Crossing& crossing, const Labels& labels)
    : Form(labels), name_(crossing), rows_(crossing) {
  add_row(_("_Name:"), name_);
  rows_.add_to(*this);
}

}  // namespace zemblar
