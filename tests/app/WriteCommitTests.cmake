# cmake/WriteCommit.cmake where its sources may lie. Takes PROJECT (the checkout), FOLDER (to work in) and GIT.
cmake_minimum_required(VERSION 3.25)
set(hash 0123456789abcdef0123456789abcdef01234567)

# Nothing of the user's settings, and no other repository: within a hook git names the checkout's own by such variables, and
# what is committed here would be committed there.
foreach(variable GIT_DIR GIT_WORK_TREE GIT_INDEX_FILE GIT_COMMON_DIR GIT_OBJECT_DIRECTORY GIT_PREFIX GIT_CONFIG_PARAMETERS
    GIT_CONFIG_COUNT)
  unset(ENV{${variable}})
endforeach()
set(ENV{GIT_CONFIG_GLOBAL} /dev/null)
set(ENV{GIT_CONFIG_NOSYSTEM} 1)

function(make_sources folder archived)
  file(MAKE_DIRECTORY "${folder}/cmake")
  file(WRITE "${folder}/cmake/commit.txt" "${archived}\n")
endfunction()

function(expect why folder given expected)
  execute_process(COMMAND "${CMAKE_COMMAND}" -D "SOURCES=${folder}" -D "OUTPUT=${FOLDER}/Commit.cpp" -D "GIT=${GIT}"
    -D "COMMIT=${given}" -P "${PROJECT}/cmake/WriteCommit.cmake" COMMAND_ERROR_IS_FATAL ANY)
  file(READ "${FOLDER}/Commit.cpp" written)
  if(NOT written MATCHES "return \"${expected}\";")
    message(SEND_ERROR "${why}: expected \"${expected}\", written is\n${written}")
  endif()
endfunction()

function(git folder)
  execute_process(COMMAND "${GIT}" -C "${folder}" -c user.name=test -c user.email=test@test.invalid ${ARGN}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE "${FOLDER}")
make_sources("${FOLDER}/alone" "$Format:%H$")
make_sources("${FOLDER}/archive" "${hash}")
expect("named by the packager" "${FOLDER}/alone" "r123" "r123")
expect("the packager knows better than the archive" "${FOLDER}/archive" "r123" "r123")
expect("an archive made by git" "${FOLDER}/archive" "" "0123456789ab")
file(TIMESTAMP "${FOLDER}/Commit.cpp" before "%s")
execute_process(COMMAND "${CMAKE_COMMAND}" -E sleep 1.1)
expect("the same again" "${FOLDER}/archive" "" "0123456789ab")
file(TIMESTAMP "${FOLDER}/Commit.cpp" after "%s")
if(NOT before STREQUAL after)
  message(SEND_ERROR "what has not changed was written again, and everything behind it would be built again")
endif()

if(NOT GIT)
  message(STATUS "git is not installed: the rest is skipped")
  return()
endif()
git("${FOLDER}" init -q)
git("${FOLDER}" add -A)
git("${FOLDER}" commit -q -m outer)
expect("a folder in another project's repository" "${FOLDER}/alone" "" "")
git("${FOLDER}/alone" init -q)
expect("a repository without a commit" "${FOLDER}/alone" "" "")
git("${FOLDER}/alone" add -A)
git("${FOLDER}/alone" commit -q -m first)
execute_process(COMMAND "${GIT}" -C "${FOLDER}/alone" rev-parse --short=12 HEAD
  OUTPUT_VARIABLE head OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
expect("a checkout" "${FOLDER}/alone" "" "${head}")
file(WRITE "${FOLDER}/alone/untracked" "")
expect("a file that git does not know is no change" "${FOLDER}/alone" "" "${head}")
file(APPEND "${FOLDER}/alone/cmake/commit.txt" "changed")
expect("a checkout with changes" "${FOLDER}/alone" "" "${head} and changes")
