# What every target of the tree has in common.

option(QUORVANE_TESTS "Build the tests" ON)
option(QUORVANE_BENCHMARKS "Build the benchmarks, which need libbenchmark-dev" OFF)
set(QUORVANE_SANITIZE "" CACHE STRING "Sanitisers to build with: a value of -fsanitize")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")

add_library(quorvane_options INTERFACE)
target_include_directories(quorvane_options INTERFACE "${PROJECT_SOURCE_DIR}")
target_compile_options(quorvane_options INTERFACE
    -Wall -Wextra -Wpedantic -Werror -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
    -Wold-style-cast -Wcast-align -Wconversion -Wsign-conversion -Wimplicit-fallthrough -Wundef
    # -Wnull-dereference is left out: optimising, g++ 12 sees it in the standard library itself.
    # A call stack is part of what the log tells of an exception.
    -fno-omit-frame-pointer)
target_compile_definitions(quorvane_options INTERFACE QUORVANE_VERSION="${PROJECT_VERSION}")
if(QUORVANE_SANITIZE)
    target_compile_options(quorvane_options INTERFACE -fsanitize=${QUORVANE_SANITIZE}
        -fno-sanitize-recover=all)
    target_link_options(quorvane_options INTERFACE -fsanitize=${QUORVANE_SANITIZE})
    # The sanitisers make g++ see uninitialised values that are not there.
    target_compile_options(quorvane_options INTERFACE
        $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()

# quorvane_library(NAME SOURCES ... LINKS ...): one folder's code.
function(quorvane_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_link_libraries(${name} PUBLIC quorvane_options ${ARG_LINKS})
endfunction()

# The tests of what several threads may use; they carry the label "threads".
add_custom_target(threaded-tests)

# A process for each test; but with a sanitiser most tests take less than their process does to start.
function(quorvane_register_tests name)
    if(NOT QUORVANE_SANITIZE)
        gtest_discover_tests(${name} DISCOVERY_TIMEOUT 120 PROPERTIES TIMEOUT 300 ${ARGN})
        return()
    endif()
    set(shards 4)
    math(EXPR last "${shards} - 1")
    foreach(shard RANGE ${last})
        add_test(NAME ${name}.${shard} COMMAND ${name})
        set_tests_properties(${name}.${shard} PROPERTIES TIMEOUT 600
            ENVIRONMENT "GTEST_TOTAL_SHARDS=${shards};GTEST_SHARD_INDEX=${shard}" ${ARGN})
    endforeach()
endfunction()

# quorvane_tests(NAME [THREADS] SOURCES ... LINKS ...): one folder's tests.
# THREADS marks code that several threads may use.
function(quorvane_tests name)
    if(NOT QUORVANE_TESTS)
        return()
    endif()
    cmake_parse_arguments(ARG "THREADS" "" "SOURCES;LINKS;PROPERTIES" ${ARGN})
    if(ARG_THREADS)
        list(APPEND ARG_PROPERTIES LABELS threads)
    endif()
    add_executable(${name} ${ARG_SOURCES})
    if(QUORVANE_SANITIZE)
        # Optimising what a sanitiser adds to the tests themselves takes half of the whole build.
        target_compile_options(${name} PRIVATE -O0)
    endif()
    target_link_libraries(${name} PRIVATE ${ARG_LINKS} quorvane_test_support GTest::gmock
        GTest::gtest_main)
    if(ARG_THREADS)
        add_dependencies(threaded-tests ${name})
    endif()
    quorvane_register_tests(${name} ${ARG_PROPERTIES})
endfunction()

# quorvane_program(NAME SOURCES ... LINKS ...): one program.
function(quorvane_program name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LINKS})
endfunction()

# The dynamic linker looks for each name in one library after the other: in the C++ library are most. A
# sanitiser's own has to come before it.
function(quorvane_link_standard_library_first name)
    if(CMAKE_SYSTEM_NAME STREQUAL "Linux" AND NOT QUORVANE_SANITIZE)
        target_link_options(${name} PRIVATE
            LINKER:--push-state,--no-as-needed,-lstdc++,--pop-state)
    endif()
endfunction()
