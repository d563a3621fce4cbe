# Helpers that keep the per-subsystem CMakeLists.txt files to a few lines.

# norvane_library(NAME SOURCES a.cc b.cc DEPS norvane_text PkgConfig::ICU ...)
# makes the static library norvane_NAME, with include/ and src/ on its include
# path, and records it for the command-line tool.
function(norvane_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  if(NOT ARG_SOURCES)
    message(STATUS "norvane_${name}: no sources yet, skipped")
    return()
  endif()
  add_library(norvane_${name} STATIC ${ARG_SOURCES})
  target_include_directories(norvane_${name}
    PUBLIC ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(norvane_${name} PUBLIC ${ARG_DEPS})
  set_property(GLOBAL APPEND PROPERTY NORVANE_LIBRARIES norvane_${name})
endfunction()

# norvane_test(NAME SOURCES a_test.cc DEPS norvane_text ...)
# makes one GoogleTest executable test_NAME and registers its cases in CTest.
# Tests find their fixtures through NORVANE_SOURCE_DIR and built programs
# through NORVANE_BINARY_DIR.
function(norvane_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  if(NOT ARG_SOURCES)
    message(STATUS "test_${name}: no sources yet, skipped")
    return()
  endif()
  add_executable(test_${name} ${ARG_SOURCES})
  target_link_libraries(test_${name} PRIVATE ${ARG_DEPS} GTest::gtest GTest::gmock GTest::gtest_main)
  target_compile_definitions(test_${name} PRIVATE
    NORVANE_SOURCE_DIR="${PROJECT_SOURCE_DIR}" NORVANE_BINARY_DIR="${PROJECT_BINARY_DIR}")
  gtest_discover_tests(test_${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()
