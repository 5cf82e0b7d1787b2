// The cost of a record and of a typical set_parser_options call, in its
// name-value and its struct form.
#include <benchmark/benchmark.h>

#include <string>
#include <utility>
#include <vector>

#include "name_value/set_parser_options.hpp"
#include "parser/options.hpp"
#include "zvarray/value.hpp"

namespace {

// Ten mixed pairs: counts, rules, texts and lists.
std::vector<std::pair<std::string, hv::Value>> typical_pairs() {
  using hv::Value;
  std::vector<std::pair<std::string, Value>> pairs;
  pairs.emplace_back("NumHeaderLines", Value::scalar(2));
  pairs.emplace_back("NumVariables", Value::scalar(5));
  pairs.emplace_back("ConsecutiveDelimitersRule", Value::text(u"join"));
  pairs.emplace_back("EmptyLineRule", Value::text(u"skip"));
  pairs.emplace_back("MissingRule", Value::text(u"omitrow"));
  pairs.emplace_back("ParserType", Value::text(u"delimited"));
  pairs.emplace_back("Delimiter", Value::cell_row({Value::text(u","), Value::text(u"\\t")}));
  pairs.emplace_back("LineEnding", Value::text(u"\\r\\n"));
  pairs.emplace_back("Whitespace", Value::text(u" \\t"));
  pairs.emplace_back("TreatAsMissing", Value::cell_row({Value::text(u"NA"), Value::text(u"N/A")}));
  return pairs;
}

void BM_DefaultConstructOptions(benchmark::State& state) {
  for (auto _ : state) {
    textio::parser::options opts;
    benchmark::DoNotOptimize(&opts);
  }
}

void BM_SetParserOptionsTenPairs(benchmark::State& state) {
  std::vector<hv::Value> values;
  for (auto& [name, value] : typical_pairs()) {
    values.push_back(hv::Value::text_utf8(name));
    values.push_back(std::move(value));
  }
  std::vector<const hvArray_tag*> args;
  for (const auto& v : values) args.push_back(v.get());
  textio::parser::options opts;
  for (auto _ : state) {
    textio::options::set_parser_options(args.data(), static_cast<std::int32_t>(args.size()), opts);
    benchmark::DoNotOptimize(&opts);
  }
}

void BM_SetParserOptionsStructTenFields(benchmark::State& state) {
  const hv::Value fields = hv::Value::struct_scalar(typical_pairs());
  const hvArray_tag* args[] = {fields.get()};
  textio::parser::options opts;
  for (auto _ : state) {
    textio::options::set_parser_options(args, 1, opts);
    benchmark::DoNotOptimize(&opts);
  }
}

BENCHMARK(BM_DefaultConstructOptions);
BENCHMARK(BM_SetParserOptionsTenPairs);
BENCHMARK(BM_SetParserOptionsStructTenFields);

}  // namespace
