// The lock of a preference file, and one typed read and one typed set under it: ours, the system
// calls that they cannot do without, and QSettings, which also locks across processes and also
// reads a file anew that has changed.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <semaphore.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QSettings>
#include <cstdio>
#include <string>

#include "bench/support.h"
#include "esd/prefs/basic_pref.h"
#include "esd/prefs/prefs_writer.h"
#include "esd/prefs/resource_locker.h"

namespace {

constexpr const char* kSemaphore = "/wakerly-bench";

sem_t* TakeLock() { return sem_open(kSemaphore, O_CREAT | O_EXCL, 0700, 1); }

void GiveLock(sem_t* lock) {
  sem_unlink(kSemaphore);
  sem_close(lock);
}

void LockLimit(benchmark::State& state) {
  for (auto _ : state) GiveLock(TakeLock());
}
BENCHMARK(LockLimit)->Name("lock/limit");

void Lock(benchmark::State& state) {
  const bench::Scratch scratch;
  esd::ResourceLocker locker(scratch.File("prefs"), 3000);
  for (auto _ : state) {
    if (!locker.Lock() || !locker.Unlock(false)) state.SkipWithError("the lock is not had");
  }
}
BENCHMARK(Lock)->Name("lock/wakerly");

// A store over a file of the schema's size, as the updater's preferences use one.
struct Store {
  Store() {
    writer.SetLockPolicy(&locker);
    pref.SetStore(&writer);
  }

  const bench::Scratch scratch;
  const std::string path = bench::MakePrefsFile(scratch, bench::kSchemaEntries);
  esd::PrefsWriter writer{path, "Preferences"};
  esd::ResourceLocker locker{path, 3000};
  esd::BasicPref<int> pref{"Key0", 0};
};

void ReadLimit(benchmark::State& state) {
  const bench::Scratch scratch;
  const std::string path = bench::MakePrefsFile(scratch, bench::kSchemaEntries);
  struct stat status {};
  for (auto _ : state) {
    sem_t* const lock = TakeLock();
    stat(path.c_str(), &status);
    GiveLock(lock);
  }
}
BENCHMARK(ReadLimit)->Name("read/limit");

void Read(benchmark::State& state) {
  Store store;
  for (auto _ : state) {
    int value = 0;
    if (!store.pref.Get(value) || value != 2) state.SkipWithError("not read");
  }
}
BENCHMARK(Read)->Name("read/wakerly");

void SetLimit(benchmark::State& state) {
  const bench::Scratch scratch;
  const std::string path = bench::MakePrefsFile(scratch, bench::kSchemaEntries);
  const std::string beside = path + ".new";
  const std::string bytes(std::filesystem::file_size(path), 'x');
  struct stat status {};
  for (auto _ : state) {
    sem_t* const lock = TakeLock();
    stat(path.c_str(), &status);
    const int file = open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (write(file, bytes.data(), bytes.size()) < 0 || fsync(file) != 0 || close(file) != 0 ||
        std::rename(beside.c_str(), path.c_str()) != 0) {
      state.SkipWithError("not written");
    }
    GiveLock(lock);
  }
}
BENCHMARK(SetLimit)->Name("set/limit");

void Set(benchmark::State& state) {
  Store store;
  int value = 0;
  for (auto _ : state) {
    if (!store.pref.Set(++value)) state.SkipWithError("not set");
  }
}
BENCHMARK(Set)->Name("set/wakerly");

QString MakeSettings(const bench::Scratch& scratch) {
  const QString path = QString::fromStdString(scratch.File("settings.ini"));
  QSettings settings(path, QSettings::IniFormat);
  for (std::int64_t i = 0; i < bench::kSchemaEntries; ++i) {
    settings.setValue(QString("Key%1").arg(i), "/Users/Shared/Vantre & Co/orlanul.log");
  }
  return path;
}

void ReadQSettings(benchmark::State& state) {
  const bench::Scratch scratch;
  QSettings settings(MakeSettings(scratch), QSettings::IniFormat);
  settings.setValue("Key0", 2);
  for (auto _ : state) {
    settings.sync();
    if (settings.value("Key0").toInt() != 2) state.SkipWithError("not read");
  }
}
BENCHMARK(ReadQSettings)->Name("read/QSettings");

void SetQSettings(benchmark::State& state) {
  const bench::Scratch scratch;
  QSettings settings(MakeSettings(scratch), QSettings::IniFormat);
  int value = 0;
  for (auto _ : state) {
    settings.setValue("Key0", ++value);
    settings.sync();
    if (settings.status() != QSettings::NoError) state.SkipWithError("not set");
  }
}
BENCHMARK(SetQSettings)->Name("set/QSettings");

}  // namespace
