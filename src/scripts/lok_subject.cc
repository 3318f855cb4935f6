#include "scripts/lok_subject.h"

#include <utility>

#include "core/layout.h"
#include "core/yaml_io.h"

namespace zemblar {

// Handlers of signal_deleted run in the order of connection, so the holder clears the locomotive
// between the two signals.
void LokSubject::set_lok(Lok* lok) {
  if (lok == get_lok()) return;
  ending_.disconnect();
  ended_.disconnect();
  if (lok) ending_ = lok->signal_deleted().connect([this] { signal_changing_.emit(); });
  holder_.set_lok(lok);
  if (lok) ended_ = lok->signal_deleted().connect([this] { signal_changed_.emit(); });
}

void LokSubject::load(const YAML::Node& node) {
  node >> read_;
  Layout::get().signal_post_resolve().connect(sigc::track_obj(
      [this] {
        set_lok(std::exchange(read_, nullptr));
        signal_changed_.emit();
        return true;
      },
      *this));
}

}  // namespace zemblar
