# Build helpers shared by every folder of the project.

# A compiler cache, when the machine has one, shares objects between build folders and
# checkouts; CI builds once and does without.
find_program(QX_CCACHE ccache)
if(QX_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_C_COMPILER_LAUNCHER ${QX_CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${QX_CCACHE})
endif()

set(QX_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wno-missing-field-initializers)
if(QX_SANITIZE)
  # Not the dynamic type check of calls: component objects that a host makes (in C, say)
  # carry tables of functions, not C++ vtables, and the module calls them all the same.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize=vptr -fno-sanitize-recover=undefined
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

if(QX_LIBFUZZER)
  # Coverage for the fuzzer in every layer, not only in the targets' own files.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# Shared objects are linked with every symbol resolved, except where clang's sanitizers
# and the fuzzer's coverage leave their runtime to the executable that loads them.
if(QX_LIBFUZZER OR (QX_SANITIZE AND CMAKE_CXX_COMPILER_ID MATCHES "Clang"))
  set(QX_NO_UNDEFINED "")
else()
  set(QX_NO_UNDEFINED -Wl,--no-undefined)
endif()

# The default content pack as the build assembles it, laid out as it is installed.
set(QX_DATA_DIR ${PROJECT_BINARY_DIR}/share/qxdynamiceffects/data)

find_package(PkgConfig REQUIRED)
find_package(GTest REQUIRED)
find_package(Threads REQUIRED)

# qx_add_layer(NAME SOURCES ... [DEPS ...])
# A static library of one layer or domain folder, with the repository root as include root.
# Every layer goes whole into libqxdynamiceffects.so.
function(qx_add_layer name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_compile_options(${name} PRIVATE ${QX_WARNINGS})
  target_link_libraries(${name} PUBLIC ${ARG_DEPS})
  set_property(GLOBAL APPEND PROPERTY QX_LAYERS ${name})
endfunction()

# The product library: all layers, whole, behind one shared object.
function(qx_add_shared_library)
  get_property(layers GLOBAL PROPERTY QX_LAYERS)
  if(NOT layers)
    return()
  endif()
  add_library(qxdynamiceffects SHARED ${PROJECT_SOURCE_DIR}/cmake/empty.cpp)
  # Whole archives, so that objects nothing inside the library calls (the catalogue's
  # routines, class objects) are still exported; the layers' own dependencies follow.
  target_link_libraries(qxdynamiceffects PRIVATE -Wl,--whole-archive ${layers} -Wl,--no-whole-archive)
  # Only the module's four entry points are exported. The library stays loaded once a
  # host loaded it (nodelete): its scene context is taken down at the process's end, never
  # under the loader's lock of an unload, and the effects' worker threads, started on
  # first use, live as long as the process.
  target_link_options(qxdynamiceffects PRIVATE -Wl,--version-script=${PROJECT_SOURCE_DIR}/host/exports.map
                      -Wl,-z,nodelete ${QX_NO_UNDEFINED})
  set_property(TARGET qxdynamiceffects APPEND PROPERTY LINK_DEPENDS ${PROJECT_SOURCE_DIR}/host/exports.map)
  set_target_properties(qxdynamiceffects PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 5)
  install(TARGETS qxdynamiceffects LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
endfunction()

# qx_add_gtest(NAME SOURCES ... DEPS ...): one GoogleTest binary, registered with CTest.
function(qx_add_gtest name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_compile_options(${name} PRIVATE ${QX_WARNINGS})
  target_link_libraries(${name} PRIVATE ${ARG_DEPS} GTest::gtest GTest::gtest_main GTest::gmock)
  target_compile_definitions(${name} PRIVATE QX_TEST_DATA_DIR="${PROJECT_SOURCE_DIR}/tests/data"
                                             QX_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()

# qx_add_benchmark(NAME SOURCES ... DEPS ...): one Google Benchmark binary (not a test),
# with the memcpy yardstick of bench/common in the same run.
function(qx_add_benchmark name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  find_package(benchmark REQUIRED)
  add_executable(${name} ${ARG_SOURCES} ${PROJECT_SOURCE_DIR}/bench/common/Yardstick.cpp)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_compile_options(${name} PRIVATE ${QX_WARNINGS})
  target_link_libraries(${name} PRIVATE ${ARG_DEPS} benchmark::benchmark benchmark::benchmark_main)
endfunction()

# qx_add_fuzzer(NAME SOURCES ... DEPS ... [CORPUS dir])
# A libFuzzer target. Without libFuzzer it links a small driver that runs the target over
# each file of its corpus, and the corpus run becomes a test, so regressions show in the
# ordinary (and sanitizer) test runs.
function(qx_add_fuzzer name)
  cmake_parse_arguments(ARG "" "CORPUS" "SOURCES;DEPS" ${ARGN})
  if(QX_LIBFUZZER)
    add_executable(${name} ${ARG_SOURCES})
    target_compile_options(${name} PRIVATE -fsanitize=fuzzer)
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  else()
    add_executable(${name} ${ARG_SOURCES} ${PROJECT_SOURCE_DIR}/fuzz/CorpusDriver.cpp)
  endif()
  target_compile_options(${name} PRIVATE ${QX_WARNINGS})
  target_link_libraries(${name} PRIVATE ${ARG_DEPS})
  if(ARG_CORPUS AND NOT QX_LIBFUZZER)
    add_test(NAME ${name}.corpus COMMAND ${name} ${ARG_CORPUS})
    set_tests_properties(${name}.corpus PROPERTIES TIMEOUT 300)
  endif()
endfunction()

# Adds every direct child folder of `dir` that has a CMakeLists.txt.
function(qx_add_child_dirs dir)
  file(GLOB children LIST_DIRECTORIES true ${PROJECT_SOURCE_DIR}/${dir}/*)
  list(SORT children)
  foreach(child IN LISTS children)
    if(IS_DIRECTORY ${child} AND EXISTS ${child}/CMakeLists.txt)
      add_subdirectory(${child})
    endif()
  endforeach()
endfunction()

include(GoogleTest)
