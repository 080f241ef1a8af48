# Writes the source that tells the commit a program was built from; run in every build, and touches the file only when that
# has changed. Takes SOURCES (the project's folder), OUTPUT, GIT (the program, or nothing) and COMMIT (over all that follows).
#
# In an archive that git made, git has put the commit into commit.txt. Whoever packs the sources in another way may name it
# by -D PELLORAN_COMMIT=... Where nobody knows it, the program says its version alone.

# The first twelve characters, whatever git thinks to be enough today: equal sources make equal programs.
function(short_commit hash result)
  set(${result} "" PARENT_SCOPE)
  if(hash MATCHES "^([0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f])")
    set(${result} "${CMAKE_MATCH_1}" PARENT_SCOPE)
  endif()
endfunction()

function(ask_git result)
  execute_process(COMMAND "${GIT}" --no-optional-locks -C "${SOURCES}" ${ARGN}
    OUTPUT_VARIABLE answer RESULT_VARIABLE failed ERROR_QUIET OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(failed)
    set(answer "")
  endif()
  set(${result} "${answer}" PARENT_SCOPE)
endfunction()

set(commit "${COMMIT}")
if(NOT commit)
  file(READ "${SOURCES}/cmake/commit.txt" archived)
  short_commit("${archived}" commit)
endif()
if(NOT commit AND GIT)
  # As a part of another project's repository the commit would be that one's.
  ask_git(top rev-parse --show-toplevel)
  file(REAL_PATH "${SOURCES}" sources)
  if(top STREQUAL sources)
    ask_git(head rev-parse HEAD)
    short_commit("${head}" commit)
    ask_git(changes status --porcelain --untracked-files=no)
    if(commit AND changes)
      string(APPEND commit " and changes")
    endif()
  endif()
endif()

set(source "// Written by cmake/WriteCommit.cmake.
#include \"app/Commit.h\"

std::string_view pelloran::commit() {
    return \"${commit}\";
}
")
set(before "")
if(EXISTS "${OUTPUT}")
  file(READ "${OUTPUT}" before)
endif()
if(NOT before STREQUAL source)
  file(WRITE "${OUTPUT}" "${source}")
endif()
