// What the program does with texts, in bytes a second, beside a plain copy of the same bytes.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "esd/util/format_string.h"
#include "esd/xml/xml_writer.h"
#include "welko/log_redaction.h"

namespace {

// A kilobyte of text in which nothing has to be replaced, and one with something.
std::string Plain() {
  std::string text;
  while (text.size() < 1024) text += "Wakerly : Window is Elapsed and going to launch Tarnik. ";
  return text;
}

std::string Marked() { return Plain() + "<user>somebody</user><password>secret & more</password>"; }

template <typename Work>
void Measure(benchmark::State& state, std::string (*make)(), Work work) {
  const std::string text = make();
  for (auto _ : state) work(text);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

void Copy(const std::string& text) {
  std::string copy = text;
  benchmark::DoNotOptimize(copy.data());
}

void Format(const std::string& text) {
  std::string out;
  esd::FormatString(out, text, "label", 1);
  benchmark::DoNotOptimize(out.data());
}

void Escape(const std::string& text) {
  std::string out = esd::XMLEscaping::EscapeXML(text.data(), text.data() + text.size());
  benchmark::DoNotOptimize(out.data());
}

void Redact(const std::string& text) {
  std::string copy = text;
  static const std::vector<std::string> keys = welko::CredentialKeys();
  if (!welko::HoldsToken(copy)) welko::MaskCredentials(copy, keys);
  benchmark::DoNotOptimize(copy.data());
}

BENCHMARK_CAPTURE(Measure, copy, &Plain, Copy)->Name("text/limit");
BENCHMARK_CAPTURE(Measure, copy_marked, &Marked, Copy)->Name("text/limit, marked");
BENCHMARK_CAPTURE(Measure, format, &Plain, Format)->Name("text/FormatString");
BENCHMARK_CAPTURE(Measure, escape, &Plain, Escape)->Name("text/EscapeXML, nothing to escape");
BENCHMARK_CAPTURE(Measure, escape_marked, &Marked, Escape)->Name("text/EscapeXML");
BENCHMARK_CAPTURE(Measure, redact, &Plain, Redact)->Name("text/redaction, no element");
BENCHMARK_CAPTURE(Measure, redact_marked, &Marked, Redact)->Name("text/redaction");

}  // namespace
