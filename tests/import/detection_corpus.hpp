// The detection corpus: real files with the answers a reader of them would
// give, listed in tests/data/detect/MANIFEST.tsv; and detection's answers in
// the same spelling, to compare field by field.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "import/detect/detection.hpp"

namespace detection_corpus {

// The fields compared, in manifest order.
inline const std::vector<std::string> fields = {"encoding",     "delimiter",  "quote",         "escape",
                                                "header_lines", "names_line", "num_variables", "decimal",
                                                "thousands",    "comment",    "table_end"};

struct entry {
  std::string file;
  std::map<std::string, std::string> expected;  // by field
};

std::vector<entry> load_manifest(const std::string& dir);

// The file's sample as the reader takes it: the first 1 MiB, then on to the
// end of that line. `whole` says whether that is all of the file.
std::string read_sample(const std::string& path, bool& whole);

// Detection's answers in the manifest's spelling; detect_fields gives nothing.
std::map<std::string, std::string> fields_of(const textio::import::detection_result& r);
std::map<std::string, std::string> detect_fields(const std::string& sample, bool whole);

// Whether `got` answers `expected` for the file whose sample is `sample`:
// encodings of one family are one answer, and fixed widths that cut the
// same fields from every line are one answer.
bool same_answer(const std::string& field, const std::string& expected, const std::string& got,
                 const std::string& sample);

}  // namespace detection_corpus
