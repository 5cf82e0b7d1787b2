// Setters of the options whose text is escape-decoded: Whitespace, which takes
// one text, and the list options Delimiter, LineEnding, TreatAsMissing and
// CommentStyle, which take a text or a list of texts. Everything is tested and
// decoded in a temporary; the record is written last, so a failure leaves it
// as it was.
#include "name_value/setters.hpp"

#include <cstddef>
#include <limits>
#include <utility>

#include "errors/msg_id_exception.hpp"
#include "errors/tags.hpp"
#include "name_value/escape_sequences.hpp"
#include "name_value/text_checks.hpp"
#include "zvarray/matrix.hpp"

namespace textio::options::setters {
namespace {

namespace msg = ZORVEK::textio::textio;
using text_list = textio::parser::options::text_list;

void decode_or_throw(ustring& text, const char* option) {
  if (!decode_escape_sequences(text)) throw_msg_id_exception(msg::InvalidEscapeSequence(option));
}

// What sets the four list options apart; the procedure is shared.
struct list_option {
  const char* name;                                       // argument of the messages
  void (*require_type)(const hvArray_tag*, const char*);  // type test, throws
  std::size_t max_entries;                                // only CommentStyle has a limit
  void (*store)(textio::parser::options&, text_list&&);   // replaces the whole field
};

constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();

// Delimiter's type failure has no argument.
void require_delimiter_type(const hvArray_tag* value, const char*) { require_delimiter_value(value); }

// The delimiter accessor also clears detecting_delimiter.
constexpr list_option delimiter_option{"Delimiter", &require_delimiter_type, unlimited,
                                       [](textio::parser::options& o, text_list&& l) { o.delimiter(std::move(l)); }};
constexpr list_option line_ending_option{
    "LineEnding", &require_text_or_list, unlimited,
    [](textio::parser::options& o, text_list&& l) { o.line_ending(std::move(l)); }};
constexpr list_option treat_as_missing_option{
    "TreatAsMissing", &require_text_or_list, unlimited,
    [](textio::parser::options& o, text_list&& l) { o.missing_placeholders(std::move(l)); }};
constexpr list_option comment_style_option{
    "CommentStyle", &require_text_or_list, 2,
    [](textio::parser::options& o, text_list&& l) { o.comment_style(std::move(l)); }};

void set_list_option(const list_option& option, const hvArray_tag* value, textio::parser::options& opts) {
  option.require_type(value, option.name);
  text_list entries = matrix::get_ustring_array(value);
  // Counted before decoding: it is the number of entries given that counts.
  if (entries.size() > option.max_entries) throw_msg_id_exception(msg::CommentStyleSize());
  for (ustring& entry : entries) decode_or_throw(entry, option.name);
  option.store(opts, std::move(entries));
}

}  // namespace

// The one decoded option that takes a single text only.
void whitespace(const hvArray_tag* value, textio::parser::options& opts) {
  require_text(value, "Whitespace");
  ustring text = matrix::get_ustring(value);
  decode_or_throw(text, "Whitespace");
  opts.whitespace(std::move(text));
}

void delimiter(const hvArray_tag* value, textio::parser::options& opts) {
  set_list_option(delimiter_option, value, opts);
}

void line_ending(const hvArray_tag* value, textio::parser::options& opts) {
  set_list_option(line_ending_option, value, opts);
}

void treat_as_missing(const hvArray_tag* value, textio::parser::options& opts) {
  set_list_option(treat_as_missing_option, value, opts);
}

void comment_style(const hvArray_tag* value, textio::parser::options& opts) {
  set_list_option(comment_style_option, value, opts);
}

}  // namespace textio::options::setters
