// For what scripts run: random conditions and a random railway against a plain model.

#include <random>
#include <set>

#include "tests/scripts/script_scene.h"
#include "track/signal.h"

namespace zemblar::test {
namespace {

/// A condition as a person would put it.
struct Plain {
  enum class Kind { occupied, signal, lok } kind;
  bool is_or = false;
  bool is_off = false;
  bool any = false;        // block, locomotive
  Block* block = nullptr;  // null: this one
  Lok* lok = nullptr;      // null: this one
  bool yes = true;         // occupied; signal at its second state
  int state = 0;           // of a locomotive, as in its menu
};

class PlainEvaluation : public ScriptScene {
 protected:
  using Instances = std::set<EventInstance>;

  void begin(unsigned seed) {
    random_.seed(seed);
    layout().new_document(false);
    blocks_ = row({"A", "B", "C"});
    for (const auto* name : {"x", "y"}) loks_.push_back(new_lok(name));
    signal_ = layout().get_blocks().add(new Signal);
    lines_.clear();
    running_.clear();
    made_ = new Script;
    act(*made_, [this](ScriptContext& run) {
      EXPECT_TRUE(running_.insert(run.instance).second) << "it has started already";
    });
    made_->signal_instance_finished().connect(
        [this](const EventInstance& instance) { running_.erase(instance); });
    for (auto left = 1 + below(4); left > 0; --left) add_line();
    layout().get_scripts().add(made_);  // no run begins with half of the lines
    made_->start();
  }
  void end() { loks_.clear(); }

  void happen() {
    auto* lok = loks_[below(2)];
    auto* block = blocks_[below(3)];
    switch (below(7)) {
      case 0:
        return at(block).occupy(below(2) != 0);
      case 1:
        return at(block).see(lok, 1 + below(2));
      case 2:
        return at(block).lose(lok);
      case 3:
        return signal_->set_state(signal_->states()[below(2)]);
      case 4:
        return lok->set_speed(below(2) * 50);
      case 5:
        return lok->set_brake(below(2) != 0);
      default:
        return block->replace_lok(below(2) != 0 ? lok : nullptr);
    }
  }

  /// What the conditions say, line by line.
  [[nodiscard]] Instances expected() const {
    Instances all;
    for (std::size_t i = 0; i < lines_.size();) {
      Instances found{EventInstance()};
      bool any_on = false;
      do {
        if (lines_[i].is_off) continue;
        any_on = true;
        Instances next;
        for (const auto& partial : found) extend(lines_[i], partial, next);
        found = next;
      } while (++i < lines_.size() && !lines_[i].is_or);
      if (any_on) all.merge(found);
    }
    return all;
  }
  [[nodiscard]] const Instances& running() const { return running_; }

 private:
  unsigned below(unsigned limit) { return static_cast<unsigned>(random_()) % limit; }

  void add_line() {
    Plain plain{.kind = static_cast<Plain::Kind>(below(3)),
                .is_or = below(3) == 0,
                .is_off = below(5) == 0,
                .any = below(3) == 0};
    const bool is_this = below(3) == 0;
    if (!plain.any && !is_this) plain.block = blocks_[below(3)], plain.lok = loks_[below(2)];
    plain.yes = below(2) != 0;
    plain.state = static_cast<int>(below(5));
    static const char* const keys[] = {"occupied", "point-state", "lok-state"};
    auto* line = create_script_event(keys[static_cast<int>(plain.kind)]);
    line->set_or_flag(plain.is_or);
    made_->add_condition(line);
    const auto subject = [&](const char* word, const Object* named) {
      return plain.any ? std::string("Any ") + word
             : named   ? named->get_name().raw()
                       : std::string("This ") + word;
    };
    if (plain.kind == Plain::Kind::occupied) {
      pick_all(*line, {subject("Block", plain.block), plain.yes ? "Occupied" : "Unoccupied"});
    } else if (plain.kind == Plain::Kind::signal) {
      pick_all(*line, {signal_->get_name(), signal_->states()[plain.yes]->get_name()});
    } else {
      pick(*line, 1, subject("Locomotive", plain.lok));
      line->choices(2)[static_cast<std::size_t>(plain.state)].choose();
    }
    made_->set_off(*line, plain.is_off);
    if (lines_.empty()) plain.is_or = false;
    lines_.push_back(plain);
  }

  void extend(const Plain& line, const EventInstance& partial, Instances& found) const {
    if (line.kind == Plain::Kind::signal) {
      if (signal_->get_state() == signal_->states()[line.yes]) found.insert(partial);
    } else if (line.kind == Plain::Kind::occupied) {
      std::vector<Block*> all(blocks_.begin(), blocks_.end());
      all.push_back(signal_);
      for (auto* block : all) {
        if (!line.any && block != (line.block ? line.block : partial.block)) continue;
        const bool is_full = block->get_lok() || block->occupied();
        if (is_full == line.yes) found.insert({block, block->get_lok()});
      }
    } else {
      for (auto* lok : loks_) {
        if (!line.any && lok != (line.lok ? line.lok : partial.lok)) continue;
        const bool stands = lok->get_brake() || lok->get_speed_overlay() == 0;
        const bool holds[] = {lok->get_brake(), stands, !stands, !lok->front,
                              partial.block && lok->spans(partial.block)};
        if (holds[line.state]) found.insert({partial.block, lok});
      }
    }
  }

  std::mt19937 random_;
  std::vector<Zone*> blocks_;
  std::vector<Lok*> loks_;
  Signal* signal_ = nullptr;
  Script* made_ = nullptr;
  std::vector<Plain> lines_;
  Instances running_;
};

TEST_F(PlainEvaluation, a_script_runs_for_what_its_conditions_say) {
  std::size_t most = 0;
  for (unsigned seed = 0; seed < 400; ++seed) {
    begin(seed);
    for (int i = 0; i < 60; ++i) {
      happen();
      clock.advance(0ms);
      ASSERT_EQ(running(), expected()) << "seed " << seed << ", event " << i;
      most = std::max(most, running().size());
    }
    end();
  }
  EXPECT_GT(most, 3u);
}

}  // namespace
}  // namespace zemblar::test
