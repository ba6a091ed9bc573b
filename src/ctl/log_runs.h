// The runs that the lines of a log tell of. What is read here is text alone: no file, no clock.
#ifndef CTL_LOG_RUNS_H_
#define CTL_LOG_RUNS_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ctl {

/// One line that wakerly wrote, in parts.
struct LogLine {
  std::int64_t time = 0;  ///< in seconds since the epoch, from the local time that it tells
  std::string thread;     ///< the id of the thread that wrote it
  std::string message;
  std::string text;  ///< the whole line
};

/// The parts of `row`, which has no line end. Nothing for a row in another form, and for one of
/// another program.
std::optional<LogLine> ParseLogLine(std::string_view row);

/// One run of wakerly.
struct LogRun {
  bool has_begin = false;  ///< whether its banner is among its lines
  std::int64_t time = 0;   ///< of the banner, else of the first line
  std::string thread;
  std::vector<std::string> lines;      ///< in order, with those of the header that it wrote
  std::optional<bool> is_scheduled;    ///< each of these is nothing where no line tells it
  std::optional<bool> is_enabled;      ///< whether the updater counted as enabled
  std::optional<bool> is_due;          ///< a run that the schedule starts does not ask
  bool calls_notifier = false;         ///< whether it was the notifier's turn
  bool reaches_library = false;        ///< whether the client library's workflow began
  bool ends_library = false;           ///< whether that went to its end
  std::optional<std::string> failure;  ///< what the workflow complained of
  bool has_end = false;                ///< whether its last line is one that a run ends with
};

/// Tells the runs apart by the threads that wrote the lines, however they are mixed.
class RunSplitter {
 public:
  /// Takes the next row of the log. The index in runs() of the run that it belongs to; nothing
  /// for what belongs to none, or is not known yet to belong to one.
  std::optional<std::size_t> Take(std::string_view row);

  /// Forgets the lines of the run of that index in runs(), which were printed; what they told
  /// stays.
  void DropLines(std::size_t run) { runs_[run].lines.clear(); }

  /// The runs, in the order in which they began.
  const std::vector<LogRun>& runs() const { return runs_; }
  /// How many of them have their begin.
  std::size_t begun() const { return begun_; }

 private:
  struct Writer {
    std::optional<std::size_t> run;
    std::vector<LogLine> header;  ///< of a file that was found empty, until the next line
    bool is_header_whole = false;
  };

  void Begin(Writer& writer, const LogLine& line, bool has_begin);

  std::vector<LogRun> runs_;
  std::map<std::string, Writer> writers_;  ///< by the id of the thread
  std::size_t begun_ = 0;
};

}  // namespace ctl

#endif  // CTL_LOG_RUNS_H_
