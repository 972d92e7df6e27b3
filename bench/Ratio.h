#pragma once

#include <string>
#include <utility>
#include <vector>

/// A figure that means something only beside another: benchmarks of one run set against each other.
///
/// The value of a benchmark is its time an item in nanoseconds, one for each round of the run; a counter of it is named
/// "benchmark:counter". A baseline is a sum of such values, each with its factor. Benchmarks that are set against each
/// other are to be registered near each other.
struct Ratio {
  std::string what;
  std::string ours;
  std::vector<std::pair<double, std::string>> baseline;
  double aim = 0;  ///< The ratio is to be at most this; 0: the figure is there for scale.
};

/// Enters a row of the table printed at the end. Returns something so that it can stand at namespace scope.
int AddRatio(Ratio ratio);
