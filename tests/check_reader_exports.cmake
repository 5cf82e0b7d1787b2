# Checks what the shared library exports of the record readers: for each
# reader exactly the constructor from options, the copy and move constructors
# and the destructor, and nothing of the stop characters, the delimiter pairs
# or the delimiter library.
# Usage: cmake -DNM=<nm> -DLIBRARY=<libzvtextparser.so> -P check_reader_exports.cmake
execute_process(COMMAND ${NM} -D --defined-only -C ${LIBRARY}
                OUTPUT_VARIABLE symbols RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "nm failed on ${LIBRARY}")
endif()
string(REPLACE "\n" ";" lines "${symbols}")

set(failures "")
foreach(reader LineRecordReader DelimitedRecordReader FixedWidthRecordReader)
  set(found "")
  foreach(line IN LISTS lines)
    string(FIND "${line}" "textio::parser::${reader}::" at)
    if(at GREATER -1)
      string(SUBSTRING "${line}" ${at} -1 name)
      list(APPEND found "${name}")
    endif()
  endforeach()
  list(REMOVE_DUPLICATES found)  # complete- and base-object variants demangle alike
  list(SORT found)
  set(expected
    "textio::parser::${reader}::${reader}(textio::parser::${reader} const&)"
    "textio::parser::${reader}::${reader}(textio::parser::${reader}&&)"
    "textio::parser::${reader}::${reader}(textio::parser::options const&)"
    "textio::parser::${reader}::~${reader}()")
  list(SORT expected)
  if(NOT found STREQUAL expected)
    string(APPEND failures "${reader} exports:\n  ${found}\nexpected:\n  ${expected}\n")
  endif()
endforeach()

foreach(line IN LISTS lines)
  if(line MATCHES "DelimiterPair|stop_characters|first_characters|Delimiter[^a-zA-Z]|get_or_create_delim")
    string(APPEND failures "exported by mistake: ${line}\n")
  endif()
endforeach()

if(failures)
  message(FATAL_ERROR "${failures}")
endif()
message(STATUS "reader exports as expected")
