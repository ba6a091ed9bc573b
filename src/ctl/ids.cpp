#include "ctl/ids.h"

#include "ctl/identifiers.h"

namespace ctl {

Answer ListIdentifiers() {
  Answer answer;
  Value::Array list;
  for (const Identifier& identifier : kIdentifiers) {
    answer.page.AddRow(identifier.name, Tone::kPlain, identifier.meaning);
    list.push_back(Value::Object{{"id", identifier.name}, {"meaning", identifier.meaning}});
  }
  answer.json = WithVersion({{"identifiers", std::move(list)}});
  return answer;
}

}  // namespace ctl
