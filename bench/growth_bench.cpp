// Whether time and memory stay in proportion: time for each entry, line or backup, and memory for
// each entry.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <fstream>
#include <string>

#include "bench/support.h"
#include "esd/prefs/prefs_writer.h"
#include "welko/log_backups.h"
#include "welko/log_target_default.h"

namespace {

std::size_t UsedMemory() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

void CountItems(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Load(benchmark::State& state) {
  const bench::Scratch scratch;
  const std::string path = bench::MakePrefsFile(scratch, state.range(0));
  for (auto _ : state) const esd::PrefsWriter store(path, "Preferences");
  CountItems(state);
  const std::size_t before = UsedMemory();
  const esd::PrefsWriter store(path, "Preferences");
  state.counters["bytes_per_item"] =
      static_cast<double>(UsedMemory() - before) / static_cast<double>(state.range(0));
}
BENCHMARK(Load)->Name("growth/load")->RangeMultiplier(10)->Range(100, 1'000'000);

void Save(benchmark::State& state) {
  const bench::Scratch scratch;
  esd::PrefsWriter store(bench::MakePrefsFile(scratch, state.range(0)), "Preferences");
  for (auto _ : state) store.Save();
  CountItems(state);
}
BENCHMARK(Save)->Name("growth/save")->RangeMultiplier(10)->Range(100, 1'000'000);

void LogLines(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    const bench::Scratch scratch;
    welko::LogTargetDefault target("UPDATER");
    target.SetLogFile("log", scratch.File("").c_str());
    target.Open();
    const welko::LogContext context = {"", "UPDATER", "WAKERLY", "", "", ""};
    state.ResumeTiming();
    for (std::int64_t i = 0; i < state.range(0); ++i) {
      target.Log(30, context, "Wakerly : Window is NOT Elapsed.", nullptr, 0, true);
    }
    state.PauseTiming();
    target.Close();
    state.ResumeTiming();
  }
  CountItems(state);
}
BENCHMARK(LogLines)->Name("growth/log line")->RangeMultiplier(10)->Range(1, 1'000'000);

void CleanUp(benchmark::State& state) {
  constexpr std::int64_t kLongAgo = 1'000'000'000;
  constexpr std::int64_t kToday = 1'700'000'000;
  for (auto _ : state) {
    state.PauseTiming();
    const bench::Scratch scratch;
    const std::string log = scratch.File("orlanul.log");
    for (std::int64_t i = 0; i < state.range(0); ++i) {
      std::ofstream(welko::BackupPath(log, kLongAgo + i)).put('x');
    }
    state.ResumeTiming();
    welko::RemoveOldBackups(log, kToday, 2);
    state.PauseTiming();
    if (std::filesystem::exists(welko::BackupPath(log, kLongAgo))) {
      state.SkipWithError("an old backup is left");
    }
    state.ResumeTiming();
  }
  CountItems(state);
}
BENCHMARK(CleanUp)->Name("growth/clean-up")->RangeMultiplier(10)->Range(10, 10'000);

}  // namespace
