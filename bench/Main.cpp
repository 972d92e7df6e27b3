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

std::vector<Ratio>& Ratios() {
  static std::vector<Ratio> ratios;
  return ratios;
}

/// Keeps the values of all repetitions; prints a dot for each, and the tables at the end.
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

  /// Every value: the best of the repetitions, and how far the middle one lies above it.
  void PrintValues() const {
    std::printf("| Benchmark | ns an item, best | median |\n|---|---|---|\n");
    for (auto [name, values] : m_values) {
      std::sort(values.begin(), values.end());
      std::printf("| %s | %.1f | %.1f |\n", name.c_str(), values.front(), values[values.size() / 2]);
    }
  }

  /// The table of ratios; false when a row misses its aim.
  bool PrintRatios() const {
    std::printf("\n| What | ns an item | baseline ns | ratio | aim | held |\n|---|---|---|---|---|---|\n");
    bool bAllHeld = true;
    for (const Ratio& row : Ratios()) {
      double baseline = 0;
      bool bMeasured = Has(row.ours);
      for (const auto& [factor, name] : row.baseline) {
        bMeasured = bMeasured && Has(name);
        if (bMeasured) baseline += factor * Best(name);
      }
      if (!bMeasured) continue;
      const double ours = Best(row.ours);
      const double ratio = ours / baseline;
      const bool bHeld = row.aim == 0 || ratio <= row.aim;
      bAllHeld = bAllHeld && bHeld;
      std::string aim = "-";
      if (row.aim != 0) {
        char text[32];
        std::snprintf(text, sizeof text, "%.2f", row.aim);
        aim = text;
      }
      std::printf("| %s | %.1f | %.1f | %.2f | %s | %s |\n", row.what.c_str(), ours, baseline, ratio, aim.c_str(),
                  row.aim == 0 ? "-"
                  : bHeld      ? "yes"
                               : "NO");
    }
    return bAllHeld;
  }

 private:
  bool Has(const std::string& name) const { return m_values.contains(name); }
  /// Whatever else runs on the machine only ever adds time, so the best repetition is the nearest to the truth.
  double Best(const std::string& name) const {
    const std::vector<double>& values = m_values.at(name);
    return *std::min_element(values.begin(), values.end());
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
  // What stands on the command line wins: the defaults go before it.
  std::string defaults[] = {"--benchmark_repetitions=9", "--benchmark_min_time=0.05",
                            "--benchmark_enable_random_interleaving=true"};
  std::vector<char*> args{argv[0]};
  for (std::string& text : defaults) args.push_back(text.data());
  args.insert(args.end(), argv + 1, argv + argc);
  int count = static_cast<int>(args.size());
  benchmark::Initialize(&count, args.data());
  if (benchmark::ReportUnrecognizedArguments(count, args.data())) return 2;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintValues();
  const bool bAllHeld = reporter.PrintRatios();
  PrintNodeSizes();
  return bAllHeld ? 0 : 1;
}
