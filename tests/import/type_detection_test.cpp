// Type detection over one-column samples: the type, the detected markers and
// whether the date order was settled.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "import/type_detection.hpp"

namespace {

using namespace textio::import;

struct column_case {
  std::vector<std::string> values;
  std::string type;
  std::vector<std::string> markers = {};
  bool unsettled = false;
  date_order order = date_order::day_first;
};

detected_type detect_one(const std::vector<std::string>& values, bool markers = true) {
  std::vector<std::vector<std::string>> rows;
  for (const auto& v : values) rows.push_back({v});
  type_detection_settings settings;
  settings.detect_markers = markers;
  settings.placeholders = {"n.a."};
  return detect_types(rows, 1, settings).at(0);
}

TEST(TypeDetection, NarrowestTypeOfEveryValue) {
  const column_case cases[] = {
      {{"1", "2.5", "", "-3e2", "NaN"}, "double"},
      {{"TRUE", "false", "n.a."}, "logical"},
      {{"1", "0", "true"}, "string"},
      {{"2020-01-02", "2020-01-03T04:05:06"}, "datetime"},
      {{"01:02:03", "100:00:00"}, "duration"},
      {{"1", "x"}, "string"},
      {{"", "  "}, "string"},
      {{"NA", "-"}, "string"},
      {{"1.5", "NA", "null", "2", "NA"}, "double", {"NA", "null"}},
      {{"true", "N/A"}, "logical", {"N/A"}},
      {{"2020-01-02", "NaN", "."}, "datetime", {"NaN", "."}},
      {{"3/4/2020", "13/4/2020"}, "datetime", {}, false, date_order::day_first},
      {{"3/4/2020", "4/13/2020"}, "datetime", {}, false, date_order::month_first},
      {{"3/4/2020", "5/6/2020"}, "datetime", {}, true},
      {{"3/3/2020", "2020-05-06"}, "datetime", {}, false},
      {{"13/4/2020", "4/13/2020"}, "string"},
  };
  for (const auto& c : cases) {
    const detected_type d = detect_one(c.values);
    const std::string where = c.values.empty() ? "" : c.values.front() + "...";
    EXPECT_EQ(type_name(d.typing.type), c.type) << where;
    EXPECT_EQ(d.typing.missing_markers, c.markers) << where;
    EXPECT_EQ(d.date_order_unsettled, c.unsettled) << where;
    if (c.type == "datetime") {
      EXPECT_EQ(d.typing.dates, c.order) << where;
    }
  }
}

TEST(TypeDetection, MarkersOnlyWhenTheUserGaveNone) {
  EXPECT_EQ(detect_one({"1", "NA"}, false).typing.type, value_type::string);
}

}  // namespace
