#include "ctl/ids.h"

#include "ctl/identifiers.h"
#include "esd/util/program_version.h"

namespace ctl {

Answer ListIdentifiers() {
  Answer answer;
  Value::Array list;
  for (const Identifier& identifier : kIdentifiers) {
    answer.page.AddRow(identifier.name, Tone::kPlain, identifier.meaning);
    list.push_back(Value::Object{{"id", identifier.name}, {"meaning", identifier.meaning}});
  }
  answer.json = Value::Object{
      {"schema", 1}, {"version", esd::ProgramVersion()}, {"identifiers", std::move(list)}};
  return answer;
}

}  // namespace ctl
