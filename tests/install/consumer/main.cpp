// Sets options through the installed library, builds a reader from them, and
// catches one of its message exceptions by its exact type, across the
// shared-library boundary. Its own errors/ folder must not shadow the
// library's headers.
#include <cstdio>
#include <exception>

#include <zvtextparser/errors/msg_id_exception.hpp>
#include <zvtextparser/errors/tags.hpp>
#include <zvtextparser/name_value/set_parser_options.hpp>
#include <zvtextparser/parser/options.hpp>
#include <zvtextparser/parser/record_readers.hpp>

#include "zvarray/value.hpp"

int main() {
  textio::parser::options opts;
  const auto key = hv::Value::text(u"DataLine");
  const auto value = hv::Value::scalar(3);
  const hvArray_tag* args[] = {key.get(), value.get()};
  textio::options::set_parser_options(args, 2, opts);
  if (opts.num_header_lines() != 2) {
    std::puts("wrong num_header_lines");
    return 1;
  }
  const textio::parser::DelimitedRecordReader reader(opts);
  const textio::parser::DelimitedRecordReader copy(reader);
  if (copy.quoted_delimiters.delimiters.stop_chars != u"\n\r" || copy.opts != &opts) {
    std::puts("wrong delimited reader");
    return 1;
  }

  const auto bad_key = hv::Value::text(u"TrimNonNumeric");
  const auto bad_value = hv::Value::scalar(1);
  const hvArray_tag* bad_args[] = {bad_key.get(), bad_value.get()};
  try {
    textio::options::set_parser_options(bad_args, 2, opts);
  } catch (const foundation::core::except::Exception<ZORVEK::textio::textio::ExpectedScalarLogical, std::exception,
                                                     void>& e) {
    std::printf("caught %s\n", e.GetMsgIDText().c_str());
    return 0;
  } catch (const std::exception& e) {
    std::printf("caught the wrong type: %s\n", e.what());
    return 1;
  }
  std::puts("nothing thrown");
  return 1;
}
