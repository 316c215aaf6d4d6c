# What all targets share, and one function for each kind of target.
include(GNUInstallDirs)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# The build tree has the shape of an installation, so that a program finds its
# modules and resources the same way in both.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(PARVANE_MODULE_DIR "${CMAKE_BINARY_DIR}/lib/parvane-host")
set(PARVANE_LIBEXEC_DIR "${CMAKE_BINARY_DIR}/libexec/parvane-host")
set(PARVANE_RESOURCE_DIR "${CMAKE_BINARY_DIR}/share/parvane-host")
set(PARVANE_LV2_DIR "${CMAKE_BINARY_DIR}/lib/lv2")

add_library(parvane_settings INTERFACE)
target_include_directories(parvane_settings INTERFACE "${CMAKE_SOURCE_DIR}")
target_compile_options(parvane_settings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    # Products and sums are rounded one by one, so that results have the same
    # bits with every compiler.
    -ffp-contract=off)
if(PARVANE_COVERAGE)
    # Compiled by itself: a C source in a target would have its precompiled header in C
    # as well. A static library has no end of its own to write counters at.
    add_library(coverage_dump OBJECT "${CMAKE_SOURCE_DIR}/cmake/CoverageDump.c")
    target_sources(parvane_settings INTERFACE
        "$<$<IN_LIST:$<TARGET_PROPERTY:TYPE>,EXECUTABLE;MODULE_LIBRARY>:$<TARGET_OBJECTS:coverage_dump>>")
    target_link_options(parvane_settings INTERFACE "LINKER:--wrap=abort,--wrap=_exit")
endif()
if(PARVANE_SANITIZE)
    # Applied everywhere: a library built without would hide what it does. Lines and
    # names are enough for a report; the rest takes a sixth of the time to compile.
    add_compile_options(-fsanitize=${PARVANE_SANITIZE} -fno-omit-frame-pointer
        -fno-sanitize-recover=all -g1)
    add_link_options(-fsanitize=${PARVANE_SANITIZE})
endif()
if(PARVANE_FUZZ)
    # Counters, from which the fuzzers learn which inputs lead to something new.
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# parvane_library(NAME SOURCES file... [PUBLIC lib...] [PRIVATE lib...])
function(parvane_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    # What a library is built with is nothing to who uses it once it is installed.
    target_link_libraries(${name} PUBLIC ${ARG_PUBLIC}
        PRIVATE $<BUILD_INTERFACE:parvane_settings> ${ARG_PRIVATE})
    target_include_directories(${name} PUBLIC "$<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}>")
    target_compile_features(${name} PUBLIC cxx_std_20)
endfunction()

# parvane_module(NAME SOURCES file... LIBRARIES lib... USED_BY target)
# What `target` loads at its first use only. It must not link `foundation`: the
# program would have every queue twice.
function(parvane_module name)
    cmake_parse_arguments(ARG "" "USED_BY" "SOURCES;LIBRARIES" ${ARGN})
    add_library(${name} MODULE ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE parvane_settings ${ARG_LIBRARIES})
    set_target_properties(${name} PROPERTIES
        PREFIX ""
        LIBRARY_OUTPUT_DIRECTORY "${PARVANE_MODULE_DIR}")
    add_dependencies(${ARG_USED_BY} ${name})
    install(TARGETS ${name} LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}/parvane-host")
endfunction()

# parvane_build_path(TARGET VARIABLE)
# Where a target's file is from the build's root, for tests (Tests/Utilities/Places.hpp).
function(parvane_build_path target variable)
    set(${variable} "$<PATH:RELATIVE_PATH,$<TARGET_FILE:${target}>,${CMAKE_BINARY_DIR}>"
        PARENT_SCOPE)
endfunction()

# parvane_test(NAME SOURCES file... LIBRARIES lib... [SERIAL] [TOGETHER]
#     [TIMEOUT seconds])
# A GoogleTest program; each of its tests becomes a test of CTest. TOGETHER makes one of
# them all, for tests that share what takes long to make.
function(parvane_test name)
    cmake_parse_arguments(ARG "SERIAL;TOGETHER" "TIMEOUT" "SOURCES;LIBRARIES;ENVIRONMENT" ${ARGN})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE parvane_settings ${ARG_LIBRARIES} test_places
        GTest::gmock GTest::gtest_main)
    # Lines and names are enough for a trace of a test; the rest takes a quarter of the
    # time to compile.
    target_compile_options(${name} PRIVATE -g1)
    set(properties TIMEOUT ${ARG_TIMEOUT})
    if(ARG_SERIAL)
        list(APPEND properties RUN_SERIAL TRUE)
    endif()
    if(ARG_ENVIRONMENT)
        # The list is taken apart once on its way.
        list(JOIN ARG_ENVIRONMENT "\\;" environment)
        list(APPEND properties ENVIRONMENT "${environment}")
    endif()
    if(ARG_TOGETHER)
        add_test(NAME ${name} COMMAND ${name})
        set_tests_properties(${name} PROPERTIES ${properties})
    else()
        # Values would be told as they are in memory: pointers, another name each time.
        gtest_discover_tests(${name} NO_PRETTY_VALUES DISCOVERY_TIMEOUT 60
            PROPERTIES ${properties})
    endif()
endfunction()
