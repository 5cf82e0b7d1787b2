// Runs the structural scan and the exact record scanner on fuzzed text under
// fuzzed delimiters, line endings, comment marker and whitespace, wherever
// the structural scan covers the settings: both must find the same records
// and fields (and the same field texts once filled in), with every kernel
// the CPU runs, for the whole text and for a window that ends early.
//
// Input: three bytes of settings and one for the window's end, then the text (bytes outside the alphabet
// map into it, so seeds can be plain text).
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "fuzz/fuzz_input.hpp"
#include "fuzz/structural_agreement.hpp"

namespace {

[[noreturn]] void fail(const char* what, std::int64_t target) {
  std::fprintf(stderr, "structural scan disagrees (%s) with kernel %s\n", what,
               textio::import::structural_target_name(target));
  std::abort();
}

const char alphabet[] = {',', ';', '\t', '|', '\n', '\r', '"', '#', ' ', 'a', '1'};

bool same_prefix(const structural_check::found_records& part, const structural_check::found_records& whole) {
  if (part.records.size() > whole.records.size()) return false;
  for (std::size_t i = 0; i < part.records.size(); ++i) {
    if (!(part.records[i] == whole.records[i])) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::FuzzInput in(data, size);
  const std::uint8_t delimiter_bits = in.byte();
  const std::uint8_t ending_bits = in.byte();
  const std::uint8_t blank_bits = in.byte();
  const std::uint8_t cut_byte = in.byte();

  std::vector<std::u16string> delimiters;
  for (const char16_t d : {u',', u';', u'\t', u'|', u'#'}) {
    if ((delimiter_bits >> delimiters.size()) & 1) delimiters.emplace_back(1, d);
  }
  std::vector<std::u16string> endings;
  if (ending_bits & 1) endings.emplace_back(u"\n");
  if (ending_bits & 2) endings.emplace_back(u"\r");
  if (ending_bits & 4) endings.emplace_back(u"\r\n");
  if (endings.empty()) endings.emplace_back(u"\n");
  const char16_t comment = (ending_bits & 8) ? u'#' : 0;
  std::u16string whitespace;
  if (blank_bits & 1) whitespace += u' ';
  if (blank_bits & 2) whitespace += u'\t';

  std::string text;
  while (!in.empty()) {
    const char c = static_cast<char>(in.byte());
    bool known = false;
    for (const char a : alphabet) known = known || a == c;
    text.push_back(known ? c : alphabet[static_cast<unsigned char>(c) % sizeof alphabet]);
  }

  const auto rules = structural_check::make_rules(delimiters, endings, comment, whitespace);
  const auto classes = textio::import::structural_classes::for_rules(rules);
  if (!classes) return 0;
  const auto exact = structural_check::exact_records(rules, text);
  const std::size_t cut = text.size() * cut_byte / 256;
  std::vector<std::int64_t> targets = textio::import::structural_targets();
  targets.push_back(0);  // the kernel chosen at run time
  for (const std::int64_t target : targets) {
    const auto whole = structural_check::structural_records(rules, *classes, text, true, target);
    if (whole.failed != exact.failed) fail("failure", target);
    if (whole.records != exact.records) fail("records", target);
    const std::string filled = structural_check::filled_records_disagree(rules, *classes, text, target);
    if (!filled.empty()) fail(filled.c_str(), target);
    const auto part =
        structural_check::structural_records(rules, *classes, std::string_view(text).substr(0, cut), false, target);
    if (!same_prefix(part, exact)) fail("records of a window that ends early", target);
  }
  return 0;
}
