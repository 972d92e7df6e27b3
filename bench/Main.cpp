// Runs the benchmarks and sets them against their baselines.

#include <benchmark/benchmark.h>
#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "Ratio.h"

void PrintNodeSizes();

namespace {

/// A machine is faster at one time than at another, for seconds or for minutes. So all benchmarks run in rounds, a
/// figure and its baselines close to each other in time, and a ratio is the median of those of the rounds.
constexpr int kRounds = 9;

std::vector<Ratio>& Ratios() {
  static std::vector<Ratio> ratios;
  return ratios;
}

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// Keeps the values of all rounds; prints a dot for each benchmark, and the tables at the end.
class RatioReporter : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& reports) override {
    for (const Run& run : reports) {
      if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
      std::string name = run.run_name.function_name;
      if (!run.run_name.args.empty()) name += "/" + run.run_name.args;
      if (!run.run_name.threads.empty()) name += "/" + run.run_name.threads;
      for (const auto& [counterName, counter] : run.counters) {
        if (counterName == "items_per_second") {
          m_values[name].push_back(1e9 / counter.value);
        } else {
          m_values[name + ":" + counterName].push_back(counter.value);
        }
      }
    }
    std::fputc('.', stderr);
  }

  void Finalize() override { std::fputc('\n', stderr); }

  /// Every value: the best round and the middle one.
  void PrintValues() const {
    std::printf("| Benchmark | ns an item, best | median |\n|---|---|---|\n");
    for (const auto& [name, values] : m_values) {
      std::printf("| %s | %.1f | %.1f |\n", name.c_str(), *std::min_element(values.begin(), values.end()),
                  Median(values));
    }
  }

  /// The table of ratios; false when a row misses its aim.
  bool PrintRatios() const {
    std::printf("\n| What | ns an item | baseline ns | ratio | aim | held |\n|---|---|---|---|---|---|\n");
    bool bAllHeld = true;
    for (const Ratio& row : Ratios()) {
      const std::vector<double> ours = GetValues(row.ours);
      std::vector<double> baselines(ours.size());
      for (const auto& [factor, name] : row.baseline) {
        const std::vector<double> values = GetValues(name);
        baselines.resize(std::min(baselines.size(), values.size()));
        for (std::size_t i = 0; i < baselines.size(); ++i) baselines[i] += factor * values[i];
      }
      if (baselines.empty()) continue;  // filtered out
      std::vector<double> ratios;
      for (std::size_t i = 0; i < baselines.size(); ++i) ratios.push_back(ours[i] / baselines[i]);
      const double ratio = Median(ratios);
      const bool bHeld = row.aim == 0 || ratio <= row.aim;
      bAllHeld = bAllHeld && bHeld;
      std::string aim = "-";
      if (row.aim != 0) {
        char text[32];
        std::snprintf(text, sizeof text, "%.2f", row.aim);
        aim = text;
      }
      std::printf("| %s | %.1f | %.1f | %.2f | %s | %s |\n", row.what.c_str(), Median(ours), Median(baselines), ratio,
                  aim.c_str(),
                  row.aim == 0 ? "-"
                  : bHeld      ? "yes"
                               : "NO");
    }
    return bAllHeld;
  }

 private:
  /// A value of each round; none when the benchmark did not run.
  std::vector<double> GetValues(const std::string& name) const {
    const auto it = m_values.find(name);
    return it == m_values.end() ? std::vector<double>{} : it->second;
  }

  std::map<std::string, std::vector<double>> m_values;
};

/// The baselines are to run on the system allocator, and the shared mimalloc brings a malloc of its own: this program's
/// must be libc's.
void CheckSystemAllocator() {
  Dl_info info{};
  void* const pMalloc = dlsym(RTLD_DEFAULT, "malloc");
  if (!pMalloc || dladdr(pMalloc, &info) == 0 || std::string(info.dli_fname).find("libc.so") == std::string::npos) {
    std::fprintf(stderr, "malloc is not libc's but that of %s: the baselines would not run on the system allocator\n",
                 info.dli_fname ? info.dli_fname : "an unknown library");
    std::exit(2);
  }
}

}  // namespace

int AddRatio(Ratio ratio) {
  Ratios().push_back(std::move(ratio));
  return static_cast<int>(Ratios().size());
}

int main(int argc, char** argv) {
  if (argc > 1 && std::string(argv[1]) == "--sizes") {
    PrintNodeSizes();
    return 0;
  }
  CheckSystemAllocator();
  // What stands on the command line wins: the default goes before it.
  std::string minTime = "--benchmark_min_time=0.05";
  std::vector<char*> args{argv[0], minTime.data()};
  args.insert(args.end(), argv + 1, argv + argc);
  int count = static_cast<int>(args.size());
  benchmark::Initialize(&count, args.data());
  if (benchmark::ReportUnrecognizedArguments(count, args.data())) return 2;
  RatioReporter reporter;
  for (int round = 0; round < kRounds; ++round) benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintValues();
  const bool bAllHeld = reporter.PrintRatios();
  PrintNodeSizes();
  return bAllHeld ? 0 : 1;
}
