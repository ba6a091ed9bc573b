// What a command answers, and how it is printed.
#ifndef CTL_ANSWER_H_
#define CTL_ANSWER_H_

#include <string>
#include <string_view>

#include "ctl/page.h"
#include "ctl/value.h"

namespace ctl {

/// The exit statuses of all commands.
///@{
inline constexpr int kDone = 0;     ///< done, and nothing wrong
inline constexpr int kProblem = 1;  ///< a problem was found, or what was asked for is not there
inline constexpr int kRefused = 2;  ///< wrong usage, refused, or the work could not be done
///@}

/// The same answer for people and for machines.
struct Answer {
  Page page;
  Value json;
  int status = kDone;
  std::string complaint = {};  ///< a line for standard error; empty for none
};

/// `members` behind "schema" and "version", with which the object of every command begins.
Value WithVersion(Value::Object members);

/// Prints `answer` to standard output, as JSON or as text, its complaint to standard error, and
/// gives the program's exit status: the answer's, or kRefused, with a line on standard error, where
/// the output does not take it. A reader that has gone is no failure.
int Print(const Answer& answer, bool as_json);

/// Prints `text` to standard output, and gives kDone, or kRefused, with a line on standard error,
/// where the output does not take it. A reader that has gone is no failure.
int PrintText(std::string_view text);

/// Writes `text` to standard output. False, with errno telling why, when that does not take it.
bool WriteOutput(std::string_view text);

/// Prints "wakerlyctl: " and `text`, in one line, to standard error.
void Complain(std::string_view text);
/// Complains, and gives kRefused.
int Refuse(std::string_view text);

}  // namespace ctl

#endif  // CTL_ANSWER_H_
