#pragma once

namespace zemblar {

/// The serial hardware that is plugged in. None is known yet.
class HWList {
 public:
  /// The one list; its first use starts discovery.
  static HWList& get();

  /// Looks again, and offers what no device holds to those who wait for it.
  void refresh();

 private:
  HWList() = default;
};

}  // namespace zemblar
