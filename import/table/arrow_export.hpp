// Hands an arrow_table to Arrow consumers through the Arrow C data and
// stream interfaces. The buffers are the table's own: nothing is copied.
// Every exported struct keeps the table alive until its release callback
// runs, so arrays may outlive the stream that gave them.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <zvtextparser/import/table/arrow_c_abi.h>
#include <zvtextparser/import/export.hpp>
#include <zvtextparser/import/table/arrow_table.hpp>

namespace textio::import {

// The table's schema: a struct ("+s") with one nullable child a field,
// named by the field, with its unit and description as metadata
// ("unit", "description") where the file had them.
ZVTEXTIMPORT_API void export_schema(const arrow_table& table, ArrowSchema* out);

// The schema of `fields` with these column types.
ZVTEXTIMPORT_API void export_schema(const std::vector<arrow_field>& fields, const std::vector<arrow_type>& types,
                                    ArrowSchema* out);

// Batch `batch` of `table` as a struct array that keeps the table alive.
ZVTEXTIMPORT_API void export_batch(std::shared_ptr<const arrow_table> table, std::size_t batch, ArrowArray* out);

// A stream of the table's batches in order: get_schema as export_schema,
// then one struct array a batch. The stream owns the table.
ZVTEXTIMPORT_API void export_to_arrow(arrow_table table, ArrowArrayStream* out);

// The format string of a column type ("g" for float64, "tsu:UTC" for a
// timestamp with a zone, ...).
ZVTEXTIMPORT_API std::string arrow_format(arrow_type type, const std::string& timezone);

}  // namespace textio::import
