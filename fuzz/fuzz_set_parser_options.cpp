// Fuzzes set_parser_options with arbitrary host values. Checks that only the
// library's eleven messages escape, that a failed pair leaves the record as it
// was before that pair, and that one call over all pairs equals the same pairs
// applied one at a time.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "fuzz/fuzz_input.hpp"
#include "fuzz/host_value_generator.hpp"
#include "name_value/set_parser_options.hpp"
#include "support/record_equality.hpp"
#include "zvcore/exceptions.hpp"

namespace {

const std::set<std::string> message_keys = {"BadTextFlag",
                                            "CommentStyleSize",
                                            "DelimiterType",
                                            "ExpectedNonNegativeScalarInt",
                                            "ExpectedPositiveScalarInt",
                                            "ExpectedScalarLogical",
                                            "InvalidEscapeSequence",
                                            "InvalidStringOrCellStringProperty",
                                            "InvalidStringProperty",
                                            "OddNumberNVPairs",
                                            "UnknownParameter"};

[[noreturn]] void fail(const char* what, const std::string& detail = {}) {
  std::fprintf(stderr, "invariant broken: %s %s\n", what, detail.c_str());
  std::abort();
}

// Runs one call; gives the message key it failed with, if any. Anything that
// is not one of the library's messages is a finding.
std::optional<std::string> call(const std::vector<const hvArray_tag*>& args, std::int32_t count,
                                textio::parser::options& opts) {
  try {
    textio::options::set_parser_options(args.empty() ? nullptr : args.data(), count, opts);
    return std::nullopt;
  } catch (const foundation::core::except::IMsgIDException& e) {
    const auto& id = e.GetBaseMsgID();
    if (id.catalog != "ZORVEK:textio:textio" || message_keys.count(id.key) == 0) fail("unknown message", id.key);
    if (e.GetMsgIDText() != id.catalog + ":" + id.key) fail("identifier", e.GetMsgIDText());
    return id.key;
  } catch (const std::exception& e) {
    fail("non-message exception", e.what());
  } catch (...) {
    fail("exception of unknown type");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 4096) return 0;  // larger inputs add nothing but time
  fuzz::FuzzInput in(data, size);

  std::vector<hv::Value> values;
  std::int32_t count = 0;
  if (in.below(8) == 0) {
    values.push_back(fuzz::draw_value(in));  // struct form, or a lone value
    count = in.below(4) == 0 ? static_cast<std::int32_t>(in.integral<std::int8_t>()) : 1;
  } else {
    const std::uint32_t pairs = in.below(6);
    for (std::uint32_t i = 0; i < pairs; ++i) {
      values.push_back(fuzz::draw_name(in));
      values.push_back(fuzz::draw_value(in));
    }
    count = static_cast<std::int32_t>(values.size());
    if (in.below(8) == 0) count = static_cast<std::int32_t>(in.integral<std::int8_t>()) % (count + 1);
  }
  // A count beyond the arguments given would be the caller's fault, not ours.
  if (count > static_cast<std::int32_t>(values.size())) count = static_cast<std::int32_t>(values.size());
  std::vector<const hvArray_tag*> args;
  for (const auto& v : values) args.push_back(v.get());

  textio::parser::options whole;
  const auto whole_failure = call(args, count, whole);

  // The same pairs one at a time, when they are pairs.
  if (count < 2 || count % 2 != 0) return 0;
  textio::parser::options step;
  std::optional<std::string> step_failure;
  for (std::int32_t i = 0; i < count && !step_failure; i += 2) {
    const textio::parser::options before = step;
    step_failure = call({args[static_cast<std::size_t>(i)], args[static_cast<std::size_t>(i) + 1]}, 2, step);
    if (step_failure) {
      const std::string diff = test_support::first_difference(before, step);
      if (!diff.empty()) fail("failed pair wrote the record", diff);
    }
  }
  if (step_failure != whole_failure) fail("one call and pairwise calls fail differently");
  const std::string diff = test_support::first_difference(whole, step);
  if (!diff.empty()) fail("one call and pairwise calls differ in", diff);
  return 0;
}
