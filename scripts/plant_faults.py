#!/usr/bin/env python3
"""Plants known faults in the reader, one at a time, and checks that the tests
catch each: plant, build the test targets, run the tests named for the fault,
restore the file.

  scripts/plant_faults.py list              the faults, as a Markdown table
  scripts/plant_faults.py check [ID...]     plant, build, test, restore (all by default)
  scripts/plant_faults.py plant ID          plant one and leave it (restore with git checkout)

Each fault names its file, its function and the change, so that it can be
planted by hand when the text below no longer matches. Run from a configured
release build (cmake --preset release).
"""
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
TESTS = ROOT / "build" / "release" / "tests"

# id, file, function, what the fault does, text to find (exactly once), its
# replacement, then the tests that must fail: (test binary, gtest filter).
FAULTS = [
    # Scanning.
    ("scan-block-comment", "import/scan/structural_scan.cpp", "structural_classes::for_rules",
     "a block comment of one-byte markers goes to the structural scan (which knows line comments only)",
     "if (rules.comment_open.longest() != 1 || !rules.comment_close.empty() ||",
     "if (rules.comment_open.longest() != 1 ||",
     [("import_tests", "*ReadSetting*:StructuralScan.*")]),
    ("scan-doubled-quote", "import/scan/record_scanner.cpp", "record_scanner::scan_units",
     "a doubled quote inside a quoted field keeps both quotes",
     "append(text, out, f, segment, pos_ + 1);", "append(text, out, f, segment, pos_ + 2);",
     [("import_tests", "*ReadSetting*:StructuralScan.*")]),
    ("scan-trim-quoted", "import/scan/record_scanner.cpp", "record_scanner::scan_units",
     "quoted fields are trimmed like unquoted ones",
     "if (rules_.trim && !f.quoted && f.length > 0", "if (rules_.trim && f.length > 0",
     [("import_tests", "*ReadSetting*:StructuralScan.*")]),
    ("scan-whitespace-set", "import/scan/structural_scan.cpp", "structural_classes::for_rules",
     "whitespace the scan cannot hold (not ASCII, or too many bytes) is left out instead of refusing the rules",
     "if (!add_unit(c.whitespace, c.whitespace_count, u)) return std::nullopt;",
     "if (!add_unit(c.whitespace, c.whitespace_count, u)) continue;",
     [("import_tests", "*ReadSetting*:StructuralScan.*")]),
    # Reading in parts.
    ("parts-crlf-start", "import/reading/parallel_reading.cpp", "guess_record_start",
     "a part guessed to start between the CR and the LF of a CR LF",
     "return at + i + (i + 1 < got && block[i + 1] == '\\n' ? 2 : 1);", "return at + i + 1;",
     [("import_tests", "ParallelReading.*:ReadCall.Threads*")]),
    ("parts-start-after-from", "import/reading/parallel_reading.cpp", "guess_record_start",
     "the search for a part's first line ending starts at `from`, missing an ending just before it (output "
     "unchanged: a part ends where the next begins, by the same guess; no test can catch it)",
     "for (std::uint64_t at = from - 1; at < size;) {", "for (std::uint64_t at = from; at < size;) {",
     [("import_tests", "ParallelReading.*:ReadCall.Threads*")]),
    ("parts-compressed-alone", "import/reading/read_path.cpp", "choose_read_path",
     "a compressed file is read on one thread instead of in parts from the decompressing thread's spool",
     "((input.is_whole_regular_file() && large) || input.can_spool());",
     "input.is_whole_regular_file() && large;",
     [("import_tests", "ParallelReading.*")]),
    ("parts-spool-floor", "import/reading/parallel_reading.cpp", "read_in_parts",
     "the spool lets go of the bytes up to a part's nominal start, also those a failed part is read again from",
     "release_before(std::min(expected.offset, readers.nominal_begin(k + 1) - 1));",
     "release_before(readers.nominal_begin(k + 1) - 1);",
     [("import_tests", "ParallelReading.*")]),
    # Shaping.
    ("shape-consecutive-error", "import/shape/delimiter_rules.cpp", "apply_delimiter_rules",
     "ConsecutiveDelimitersRule error misses the blank field just before the last field",
     "for (std::size_t i = first + 1; i < last; ++i) {", "for (std::size_t i = first + 1; i + 1 < last; ++i) {",
     [("import_tests", "*ReadSetting*")]),
    ("shape-only-delimiters", "import/shape/delimiter_rules.cpp", "apply_delimiter_rules",
     "a record of delimiters only keeps its fields under LeadingDelimitersRule ignore",
     "if (rules.leading != LeadingDelimiterRule::Keep) fields.clear();", "",
     [("import_tests", "*ReadSetting*:ReadCsv.*")]),
    ("shape-names-count", "import/shape/header_lines.cpp", "header_lines::take",
     "the names line no longer sets the variable count",
     "if (!variables) variables = names_.size();", "if (!variables && false) variables = names_.size();",
     [("import_tests", "*ReadSetting*:ReadHeader.*")]),
    ("shape-fixed-partial", "import/shape/fixed_width_cutter.cpp", "cut_fixed_width",
     "a record shorter than the widths is not marked short when it ends inside a field",
     "if (widths[i] > left || (left == 0 && widths[i] > 0)) {", "if (left == 0 && widths[i] > 0) {",
     [("import_tests", "*ReadSetting*")]),
    ("shape-omitvar-padding", "import/shape/omitted_variables.cpp", "omitted_variables::send_rows",
     "padding of an omitted variable is written anyway",
     "if (i >= marks_.size() || !marks_[i]) ++kept_padding;", "++kept_padding;",
     [("import_tests", "*ReadSetting*:ColumnTable.*")]),
    # Values.
    ("values-year-pivot", "import/values/datetime_parsing.cpp", "full_year",
     "two-digit years turn between 69 and 70 instead of 68 and 69",
     "return year < 69 ? 2000 + year : 1900 + year;", "return year < 70 ? 2000 + year : 1900 + year;",
     [("value_tests", "*")]),
    ("values-uint16-range", "import/values/value_conversion.cpp", "fits_type",
     "uint16 checked against int16's range",
     "return in_range<std::uint16_t>(v);", "return in_range<std::int16_t>(v);",
     [("value_tests", "*")]),
    ("values-thousands", "import/values/number_conversion.cpp", "to_number",
     "a thousands separator makes the number fail instead of being skipped",
     "} else if (format.thousands_separator.find(u) != std::u16string::npos) {\n      continue;",
     "} else if (format.thousands_separator.find(u) != std::u16string::npos) {\n      return false;",
     [("value_tests", "*"), ("import_tests", "*ReadSetting*")]),
    ("values-duration-days", "import/values/duration_parsing.cpp", "parse_duration",
     "a day count up to 999999 accepted",
     "if (*hours > 99999) return std::nullopt;", "if (*hours > 999999) return std::nullopt;",
     [("value_tests", "*")]),
    ("values-quoted-missing", "import/values/value_stage.cpp", "value_stage::is_missing",
     "a quoted empty field counts as missing",
     "  if (c.quoted) return false;\n  if (t.empty()) return true;", "  if (t.empty()) return true;",
     [("import_tests", "*ReadSetting*")]),
    ("values-omitrow", "import/values/value_stage.cpp", "value_stage::keep_row_under",
     "MissingRule / ImportErrorRule omitrow keeps the row",
     "    case BadDataRule::OmitRow:\n      return false;", "    case BadDataRule::OmitRow:\n      return true;",
     [("import_tests", "*ReadSetting*")]),
    ("values-12-hour", "import/values/datetime_parsing.cpp", "time of day (AM/PM)",
     "the hour of a 12-hour clock not taken modulo 12 (12 PM reads as 24, 12 AM as noon)",
     "h = *h % 12 + half;", "h = *h + half;",
     [("value_tests", "*")]),
    ("input-utf16-columns", "import/input/utf8_text.cpp", "utf16_length",
     "a character outside the BMP counts as one UTF-16 unit in error columns",
     "if (b >= 0xF0u) ++units;", "",
     [("import_tests", "*ReadSetting*")]),
    ("input-spool-failure", "import/input/stream_spool.cpp", "stream_spool::read_at",
     "a decompressing thread's failure reads as the end of the input (a partial result)",
     "if (failure_) std::rethrow_exception(failure_);", "",
     [("import_tests", "CompressedInput.*")]),
    # Tables.
    ("table-column-padding", "import/table/column_table.cpp", "column_table_sink::padded_record",
     "the last column of a short record is not padded with a missing value",
     "for (std::size_t i = values.size(); i < table_.columns.size(); ++i) add_missing(table_.columns[i]);",
     "for (std::size_t i = values.size(); i + 1 < table_.columns.size(); ++i) add_missing(table_.columns[i]);",
     [("import_tests", "ColumnTable.*:ArrowTable.*:ReadCall.*")]),
    # Writers.
    ("write-csv-padding", "tools/record_writers.cpp", "csv_writer::padded_record",
     "a record of padding only written with one field too many",
     "values.empty() && missing > 0 ? missing - 1 : missing)", "missing)",
     [("import_tests", "ReadCsv.*:*ReadSetting*:ReadTypes.*:CsvRoundTrip*")]),
    ("write-json-control", "tools/json_writer.cpp", "append_ascii_escape",
     "control characters other than the named ones written unescaped",
     "      if (unit < 0x20) {", "      if (unit < 0x01) {",
     [("import_tests", "*ReadSetting*:CsvRoundTrip*")]),
    # Detection (the corpus floor, DetectionCorpus.*, is left out: each rule
    # must be caught by a case of its own).
    ("detect-dialect-extra", "import/detect/dialect_scoring.cpp", "candidate_delimiters",
     "no punctuation beyond , ; tab | : is tried as a delimiter",
     "if (best * 10 >= examined * 7) extra.emplace_back(best, ch);",
     "if (false && best * 10 >= examined * 7) extra.emplace_back(best, ch);",
     [("detection_tests", "-DetectionCorpus.*")]),
    ("detect-dialect-quote-penalty", "import/detect/dialect_scoring.cpp", "score_dialect",
     "fields left in quotes by a dialect without that quote are not held against it",
     "s.score *= 1 - 0.5 * std::min(1.0, 4.0 * static_cast<double>(unparsed_quotes) / static_cast<double>(cells));",
     "", [("detection_tests", "-DetectionCorpus.*")]),
    ("detect-dialect-preference", "import/detect/dialect_scoring.cpp", "preference",
     "semicolon preferred to tab on a tie",
     'static constexpr std::string_view order = ",\\t;|:";', 'static constexpr std::string_view order = ",;\\t|:";',
     [("detection_tests", "-DetectionCorpus.*")]),
    ("detect-layout-fits", "import/detect/layout_rows.cpp", "fits",
     "a row one field short or long belongs to a table of 4 fields or more only (was 3)",
     "return count == k || (k >= 3 && count + 1 >= k && count <= k + 1);",
     "return count == k || (k >= 4 && count + 1 >= k && count <= k + 1);",
     [("detection_tests", "-DetectionCorpus.*")]),
    ("detect-layout-trailing", "import/detect/table_layout.cpp", "analyse_layout",
     "a delimiter at the end of every row counts as a variable",
     "out.trailing_delimiter = true;\n    out.num_variables = k - 1;",
     "out.trailing_delimiter = true;\n    out.num_variables = k;",
     [("detection_tests", "-DetectionCorpus.*")]),
    ("detect-names-text", "import/detect/table_layout.cpp", "analyse_layout (text_names)",
     "a names row over text columns needs more names of another form than of the same",
     "return other_form >= 0;", "return other_form > 0;",
     [("detection_tests", "-DetectionCorpus.*")]),
    ("detect-names-short", "import/detect/table_layout.cpp", "analyse_layout",
     "a names row one name short (row names first) is not shifted",
     "shift = all_wider && last_given ? 1 : 0;", "shift = 0;",
     [("detection_tests", "-DetectionCorpus.*")]),
    ("detect-header-units", "import/detect/table_layout.cpp", "analyse_layout",
     "at most one names row (a units row below the names becomes data)",
     "while (any_typed && out.names_rows < 3 &&", "while (any_typed && out.names_rows < 1 &&",
     [("detection_tests", "-DetectionCorpus.*")]),
    ("detect-table-end", "import/detect/table_layout.cpp", "analyse_layout",
     "after a break the table goes on unless none of the rows that follow fits",
     "if (window == 0 || agree * 2 < window) {", "if (window == 0 || agree == 0) {",
     [("detection_tests", "-DetectionCorpus.*")]),
    ("detect-fixed-word-gap", "import/detect/fixed_width_columns.cpp", "fixed_width_starts",
     "a single blank between words on a few lines starts a column",
     "const bool word_gap = n <= few_lines &&", "const bool word_gap = false && n <= few_lines &&",
     [("detection_tests", "-DetectionCorpus.*")]),
    ("detect-fixed-start", "import/detect/fixed_width_columns.cpp", "fixed_width_starts",
     "a column starts at its first non-blank instead of right after the gap's first blank",
     "out.starts.push_back(p - (out.starts.empty() ? 0 : gap_width - 1));", "out.starts.push_back(p);",
     [("detection_tests", "-DetectionCorpus.*")]),
    ("detect-types-leading-zero", "import/detect/type_detection.cpp", "type_of",
     "numbers with leading zeros (codes) detected as double",
     "ok = converts(v, type, conv) && !(type == value_type::double_ && has_leading_zero(v));",
     "ok = converts(v, type, conv) && !(type == value_type::double_ && has_leading_zero(v) && false);",
     [("detection_tests", "-DetectionCorpus.*"), ("value_tests", "*")]),
    ("detect-types-markers", "import/detect/type_detection.cpp", "is_usual_marker",
     "n/a is no usual missing marker",
     '{"na", "n/a", "nan", "null", "-", "."}', '{"na", "nan", "null", "-", ".", "."}',
     [("detection_tests", "-DetectionCorpus.*"), ("value_tests", "*")]),
    ("detect-encoding-western", "import/detect/encoding.cpp", "looks_western",
     "runs of three bytes above 127 still read as Western European",
     "if (++run > 2) return false;", "if (++run > 3) return false;",
     [("detection_tests", "-DetectionCorpus.*")]),
    ("detect-encoding-utf16", "import/detect/encoding.cpp", "utf16_without_bom",
     "UTF-16BE without a mark needs zeros on 9 in 10 even bytes (was 7 in 10)",
     "if (even_zero * 10 >= pairs * 7 && odd_zero * 10 <= pairs) return \"UTF-16BE\";",
     "if (even_zero * 10 >= pairs * 9 && odd_zero * 10 <= pairs) return \"UTF-16BE\";",
     [("detection_tests", "-DetectionCorpus.*")]),
    ("detect-thousands-dot", "import/detect/cell_types.cpp", "guess_number_format",
     "a grouping dot needs two grouped numbers, not one",
     "if (f.decimal == ',' && v.thousands_dot >= 1 && v.thousands_dot >= v.thousands_comma) f.thousands = '.';",
     "if (f.decimal == ',' && v.thousands_dot >= 2 && v.thousands_dot >= v.thousands_comma) f.thousands = '.';",
     [("detection_tests", "-DetectionCorpus.*")]),
    ("detect-comment-marker", "import/detect/sample_preamble.cpp", "find_comment_marker",
     "// is no comment marker",
     'static constexpr std::string_view markers[] = {"#", "%", "//"};',
     'static constexpr std::string_view markers[] = {"#", "%", "#"};',
     [("detection_tests", "-DetectionCorpus.*")]),
]

TARGETS = {"import_tests", "value_tests", "detection_tests"}


def find(fault_id):
    for f in FAULTS:
        if f[0] == fault_id:
            return f
    sys.exit(f"no fault {fault_id}")


def plant(fault):
    fid, file, _, _, old, new, _ = fault
    path = ROOT / file
    text = path.read_text()
    if text.count(old) != 1:
        raise RuntimeError(f"{fid}: the text to change is in {file} {text.count(old)} times; plant it by hand")
    path.write_text(text.replace(old, new))
    return text


def check(fault):
    fid, file, _, _, _, _, tests = fault
    original = plant(fault)
    try:
        targets = sorted({binary for binary, _ in tests} & TARGETS)
        build = subprocess.run(["cmake", "--build", "--preset", "release", "--target", *targets], cwd=ROOT,
                               capture_output=True, text=True)
        if build.returncode != 0:
            return "build failed", build.stdout[-2000:]
        caught = []
        for binary, flt in tests:
            run = subprocess.run([str(TESTS / binary), f"--gtest_filter={flt}", "--gtest_brief=1"], cwd=ROOT,
                                 capture_output=True, text=True, timeout=900)
            failed = {line[12:].split()[0] for line in run.stdout.splitlines()
                      if line.startswith("[  FAILED  ]") and not line[12:].split()[0].isdigit()}
            # The messages tests stream after a failed check name the case.
            noise = ("Expected", "Value of", "Actual", "Which is", "Running main", "Note:", "/")
            cases = {line for line in run.stdout.splitlines()
                     if line and not line[0].isspace() and not line.startswith(("[",) + noise)}
            if run.returncode != 0:
                caught.append(f"{binary}: " + " ".join(sorted(failed)[:4]) +
                              (" (" + "; ".join(sorted(cases)[:3]) + ")" if cases else ""))
        return ("caught" if caught else "NOT CAUGHT"), "; ".join(caught)
    finally:
        (ROOT / file).write_text(original)


def main():
    if len(sys.argv) < 2 or sys.argv[1] not in ("list", "check", "plant"):
        sys.exit(__doc__)
    if sys.argv[1] == "list":
        print("| id | file | function | fault |\n|---|---|---|---|")
        for fid, file, function, what, *_ in FAULTS:
            print(f"| {fid} | {file} | {function} | {what} |")
    elif sys.argv[1] == "plant":
        plant(find(sys.argv[2]))
    else:
        chosen = [find(i) for i in sys.argv[2:]] or FAULTS
        for fault in chosen:
            result, detail = check(fault)
            print(f"{fault[0]}\t{result}\t{detail}", flush=True)


if __name__ == "__main__":
    main()
