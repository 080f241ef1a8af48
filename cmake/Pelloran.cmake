# What every target of this project shares, and the four ways to add one.

add_library(pelloran_options INTERFACE)
target_compile_options(pelloran_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor)
if(PELLORAN_WARNINGS_AS_ERRORS)
  target_compile_options(pelloran_options INTERFACE -Werror)
endif()
# Text is UTF-16 in Qt and bytes in files: crossing over is always written out.
target_compile_definitions(pelloran_options INTERFACE QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS)
target_include_directories(pelloran_options INTERFACE "${PROJECT_SOURCE_DIR}/src" "${PROJECT_SOURCE_DIR}")
# GCC looks for garbage from a few megabytes on, which takes a tenth of the time of compiling the larger sources and spares
# them 20 of 430 MB.
target_compile_options(pelloran_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:--param=ggc-min-heapsize=262144>)
if(PELLORAN_SANITIZERS)
  target_compile_options(pelloran_options INTERFACE
    -fsanitize=${PELLORAN_SANITIZERS} -fno-omit-frame-pointer -fno-sanitize-recover=all
    $<$<CXX_COMPILER_ID:Clang,AppleClang>:-fsanitize-ignorelist=${PROJECT_SOURCE_DIR}/cmake/ubsan.ignorelist>)
  target_link_options(pelloran_options INTERFACE -fsanitize=${PELLORAN_SANITIZERS})
  # What sanitizers cannot see, because the memory is there: an element behind the last one, the value of what has none, a
  # part of a text beyond its end. The standard library and Qt look for these where they are told to.
  target_compile_definitions(pelloran_options INTERFACE _GLIBCXX_ASSERTIONS QT_FORCE_ASSERTS)
endif()
if(NOT PELLORAN_SANITIZERS)
  include("${CMAKE_CURRENT_LIST_DIR}/Hardening.cmake")
  pelloran_harden(pelloran_options)
endif()
if(PELLORAN_SANITIZERS MATCHES "thread" AND CMAKE_SYSTEM_NAME STREQUAL "Linux")
  add_library(pelloran_clone OBJECT "${CMAKE_CURRENT_LIST_DIR}/ThreadSanitizerClone.cpp")
endif()
if(PELLORAN_FUZZERS)
  # The fuzz targets see only the branches of what is built to report them.
  target_compile_options(pelloran_options INTERFACE -fsanitize=fuzzer-no-link)
  target_link_options(pelloran_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# What most sources include: parsing it takes most of the time of compiling one. Compiled once, with `base`, and taken by
# every library and program. Sources still include what they use, which scripts/check looks after. (Compiling several
# sources as one saves as much of a full build and nothing of the next one, and lets names of one source clash with
# another's.)
set(pelloran_common_headers
  <QByteArray> <QDir> <QFile> <QFileInfo> <QJsonDocument> <QJsonObject> <QObject> <QString> <QStringList> <QTimer> <QUrl>
  <algorithm> <array> <chrono> <cmath> <expected> <filesystem> <functional> <memory> <optional> <utility> <variant>
  <vector>)

# pelloran_library(NAME [MOC] SOURCES file... LINKS library... [HEADERS header...])
# MOC where a header has Q_OBJECT. The list of links is the architecture: a library sees only what it lists. HEADERS are
# precompiled for it in place of those of `base`.
function(pelloran_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "MOC" "" "SOURCES;LINKS;HEADERS")
  add_library(${name} STATIC ${arg_SOURCES})
  target_link_libraries(${name} PUBLIC pelloran_options ${arg_LINKS})
  if(arg_HEADERS)
    target_precompile_headers(${name} PRIVATE ${arg_HEADERS})
  else()
    target_precompile_headers(${name} REUSE_FROM base)
  endif()
  if(arg_MOC)
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
  endif()
endfunction()

# pelloran_program(NAME SOURCES file... LINKS library...)
function(pelloran_program name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS")
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE pelloran_options ${arg_LINKS})
  target_precompile_headers(${name} REUSE_FROM base)
  if(TARGET pelloran_clone)
    target_sources(${name} PRIVATE $<TARGET_OBJECTS:pelloran_clone>)
  endif()
endfunction()

# Optimising GoogleTest's macros takes as long as all the rest of compiling a test. The sanitizers are slow enough as it is.
add_library(pelloran_test_options INTERFACE)
if(NOT PELLORAN_SANITIZERS)
  # Without the fortified C library, which some systems switch on: it complains when nothing is optimised.
  target_compile_options(pelloran_test_options INTERFACE -O0 -U_FORTIFY_SOURCE)
endif()
if(PELLORAN_FUZZERS)
  target_compile_options(pelloran_test_options INTERFACE -fno-sanitize=fuzzer-no-link) # a sixth of compiling them
endif()

# pelloran_test(NAME [WIDGETS] SOURCES file... LINKS library... [LABELS label...])
# One program per folder of tests; each TEST becomes a case of its own in CTest. WIDGETS for what needs a QApplication.
function(pelloran_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "WIDGETS" "" "SOURCES;LINKS;LABELS")
  set(support test_support)
  if(arg_WIDGETS)
    set(support widget_test_support)
  endif()
  pelloran_program(${name} SOURCES ${arg_SOURCES} LINKS pelloran_test_options ${support} ${arg_LINKS})
  target_precompile_headers(${name} REUSE_FROM test_support)
  set(labels unit)
  if(arg_LABELS)
    set(labels "${arg_LABELS}")
  endif()
  set(cost 0)
  if("desktop" IN_LIST labels)
    set(cost 1000) # these wait most of their time: begun first, the others run meanwhile
  endif()
  gtest_discover_tests(${name} TEST_PREFIX "${name}." DISCOVERY_TIMEOUT 60
    PROPERTIES LABELS "${labels}" TIMEOUT 300 COST ${cost} ENVIRONMENT "QT_QPA_PLATFORM=offscreen")
endfunction()

# pelloran_benchmark(NAME SOURCES file... LINKS library...)
function(pelloran_benchmark name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS")
  pelloran_program(${name} SOURCES ${arg_SOURCES} LINKS benchmark::benchmark ${arg_LINKS})
  target_compile_definitions(${name} PRIVATE PELLORAN_TEST_DATA="${PELLORAN_TEST_DATA}")
endfunction()

# pelloran_fuzzer(NAME SOURCES file... LINKS library...)
function(pelloran_fuzzer name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS")
  pelloran_program(${name} SOURCES ${arg_SOURCES} LINKS ${arg_LINKS})
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
endfunction()
