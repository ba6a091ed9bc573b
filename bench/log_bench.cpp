// One line of a log that several processes share: ours, the system calls it cannot do without, and
// other libraries' lines.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <log4cplus/fileappender.h>
#include <log4cplus/helpers/property.h>
#include <log4cplus/initializer.h>
#include <log4cplus/layout.h>
#include <log4cplus/logger.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#include <sys/sem.h>
#include <unistd.h>

#include "bench/support.h"
#include "welko/log_target_default.h"

namespace {

constexpr const char* kMessage = "Wakerly : Window is Elapsed and going to launch Tarnik.";

void Limit(benchmark::State& state) {
  const bench::Scratch scratch;
  // As long as ours.
  const std::string line =
      "11/21/26 12:16:09:699 | [INFO] |  | UPDATER | WAKERLY |  |  |  | 12345 | " +
      std::string(kMessage) + "\n";
  const int set = semget(IPC_PRIVATE, 2, 0600);
  semctl(set, 1, SETVAL, 1);
  const int file = open(scratch.File("log").c_str(), O_WRONLY | O_CREAT | O_APPEND, 0666);
  sembuf take{1, -1, SEM_UNDO};
  sembuf give{1, 1, SEM_UNDO};
  for (auto _ : state) {
    semop(set, &take, 1);
    benchmark::DoNotOptimize(write(file, line.data(), line.size()));
    semop(set, &give, 1);
  }
  close(file);
  semctl(set, 0, IPC_RMID);
}
BENCHMARK(Limit)->Name("log/line/limit");

void Ours(benchmark::State& state) {
  const bench::Scratch scratch;
  welko::LogTargetDefault target("UPDATER");
  target.SetLogFile("log", scratch.File("").c_str());
  target.Open();
  const welko::LogContext context = {"", "UPDATER", "WAKERLY", "", "", ""};
  for (auto _ : state) target.Log(30, context, kMessage, nullptr, 0, true);
  target.Close();
}
BENCHMARK(Ours)->Name("log/line/wakerly");

void Log4cplus(benchmark::State& state) {
  const bench::Scratch scratch;
  // It cannot be taken down and set up a second time.
  static const log4cplus::Initializer initializer;
  log4cplus::helpers::Properties properties;
  properties.setProperty("File", scratch.File("log"));
  properties.setProperty("UseLockFile", "true");
  properties.setProperty("LockFile", scratch.File("lock"));
  properties.setProperty("ImmediateFlush", "true");
  log4cplus::SharedAppenderPtr appender(new log4cplus::FileAppender(properties));
  appender->setLayout(std::make_unique<log4cplus::PatternLayout>(
      "%D{%m/%d/%y %H:%M:%S:%q} | [%p] |  | UPDATER | WAKERLY |  |  |  | %T | %m%n"));
  log4cplus::Logger logger = log4cplus::Logger::getInstance("updater");
  logger.setAdditivity(false);
  logger.removeAllAppenders();
  logger.addAppender(appender);
  for (auto _ : state) logger.log(log4cplus::INFO_LOG_LEVEL, kMessage, __FILE__, __LINE__);
  logger.removeAllAppenders();
}
BENCHMARK(Log4cplus)->Name("log/line/log4cplus");

void Spdlog(benchmark::State& state) {
  const bench::Scratch scratch;
  auto sink = std::make_shared<spdlog::sinks::basic_file_sink_st>(scratch.File("log"));
  spdlog::logger logger("updater", sink);
  logger.set_pattern("%D %T:%e | [%^%l%$] |  | UPDATER | WAKERLY |  |  |  | %t | %v");
  logger.flush_on(spdlog::level::trace);
  for (auto _ : state) logger.info(kMessage);
}
BENCHMARK(Spdlog)->Name("log/line/spdlog");

}  // namespace
