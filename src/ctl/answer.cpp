#include "ctl/answer.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "esd/util/program_version.h"
#include "platform/standard_error.h"

namespace ctl {

Value WithVersion(Value::Object members) {
  constexpr int kSchema = 1;
  const Value::Object first = {{"schema", kSchema}, {"version", esd::ProgramVersion()}};
  members.insert(members.begin(), first.begin(), first.end());
  return members;
}

bool WriteOutput(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
    if (written < 0 && errno != EINTR) return false;
    if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

int PrintText(std::string_view text) {
  if (WriteOutput(text) || errno == EPIPE) return kDone;
  return Refuse(std::string("the output cannot be written: ") + std::strerror(errno));
}

int Print(const Answer& answer, bool as_json) {
  const std::string text = as_json ? ToJson(answer.json) : answer.page.Render(StandardDisplay());
  if (PrintText(text) != kDone) return kRefused;
  if (!answer.complaint.empty()) Complain(answer.complaint);
  return answer.status;
}

void Complain(std::string_view text) {
  platform::WriteToStandardError("wakerlyctl: " + Printable(text) + "\n");
}

int Refuse(std::string_view text) {
  Complain(text);
  return kRefused;
}

}  // namespace ctl
