# Writes OUTPUT, a C++ source that holds the text of each .asm file of INPUTS
# (separated by "|") as one string literal, named by the file's stem. The
# literal keeps the file's lines one per source line, so that the generated
# file reads like the assembly it holds. Run as: cmake -P embed_asm.cmake.
string(REPLACE "|" ";" inputs "${INPUTS}")
set(body "")
foreach(path IN LISTS inputs)
  get_filename_component(stem "${path}" NAME_WE)
  file(READ "${path}" text)
  string(REPLACE "\r" "" text "${text}")
  string(REPLACE "\\" "\\\\" text "${text}")
  string(REPLACE "\"" "\\\"" text "${text}")
  string(REPLACE "\t" "\\t" text "${text}")
  string(REPLACE "\n" "\\n\"\n     \"" text "${text}")
  string(APPEND body "    {\"${stem}\",\n     \"${text}\"},\n")
endforeach()
set(content "// Generated from runtime/asm/*.asm by runtime/embed_asm.cmake; do not edit.
#include \"runtime/runtime_sources.h\"

namespace mb {

const RuntimeSource kRuntimeSources[] = {
${body}};

const int kRuntimeSourceCount = static_cast<int>(sizeof kRuntimeSources / sizeof kRuntimeSources[0]);

}  // namespace mb
")
# Rewritten only when it changes, so that an unrelated reconfigure rebuilds nothing.
if(EXISTS "${OUTPUT}")
  file(READ "${OUTPUT}" old)
  if(old STREQUAL content)
    return()
  endif()
endif()
file(WRITE "${OUTPUT}" "${content}")
