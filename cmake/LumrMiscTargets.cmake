# How the targets of this project are declared.
#
# Every folder of the library is an object library that names the folders it stands on; the
# library is all of them together. A test or fuzz target links only the folders it needs, so
# that a folder can be built and tested while another one is under construction.

add_library(lumrmisc_options INTERFACE)
if(LUMRMISC_WERROR)
  target_compile_options(lumrmisc_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
    # g++ 12 takes std::string's operator+ for an overlapping copy when it inlines it.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
endif()
if(LUMRMISC_SANITIZE)
  target_compile_options(lumrmisc_options INTERFACE
    -fsanitize=${LUMRMISC_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(lumrmisc_options INTERFACE -fsanitize=${LUMRMISC_SANITIZE})
endif()

# lumrmisc_folder(NAME [DEPENDS folder...] SOURCES file... [LOOPS file...])
# LOOPS: further sources, or ALL, where a release lets the compiler unroll and vectorise. The others
# have kernels where it pays, and are a fifth smaller without.
function(lumrmisc_folder name)
  cmake_parse_arguments(arg "" "" "DEPENDS;SOURCES;LOOPS" ${ARGN})
  if(arg_LOOPS STREQUAL "ALL")
    set(arg_LOOPS)
  elseif(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    set_source_files_properties(${arg_SOURCES} PROPERTIES
      COMPILE_OPTIONS $<$<CONFIG:Release>:-O2>)
  endif()
  add_library(lumrmisc_${name} OBJECT ${arg_SOURCES} ${arg_LOOPS})
  set_target_properties(lumrmisc_${name} PROPERTIES VISIBILITY_INLINES_HIDDEN ON)
  target_compile_features(lumrmisc_${name} PUBLIC cxx_std_20)
  target_include_directories(lumrmisc_${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(lumrmisc_${name} PRIVATE $<BUILD_INTERFACE:lumrmisc_options>)

  set(closure lumrmisc_${name})
  foreach(below IN LISTS arg_DEPENDS)
    get_property(closure_below GLOBAL PROPERTY LUMRMISC_CLOSURE_${below})
    if(NOT closure_below)
      message(FATAL_ERROR "${name} stands on ${below}, which is not below it")
    endif()
    list(APPEND closure ${closure_below})
  endforeach()
  list(REMOVE_DUPLICATES closure)
  set_property(GLOBAL PROPERTY LUMRMISC_CLOSURE_${name} ${closure})
  set_property(GLOBAL APPEND PROPERTY LUMRMISC_FOLDERS lumrmisc_${name})
endfunction()

# Links the objects of the named folders, and of all below them, into a target.
function(lumrmisc_link target)
  set(objects)
  foreach(folder IN LISTS ARGN)
    get_property(closure GLOBAL PROPERTY LUMRMISC_CLOSURE_${folder})
    list(APPEND objects ${closure})
  endforeach()
  list(REMOVE_DUPLICATES objects)
  target_link_libraries(${target} PRIVATE ${objects} lumrmisc_options)
endfunction()

# lumrmisc_test(NAME FOLDERS folder... SOURCES file... [LIBRARIES lib...])
# One GoogleTest program, test_NAME, run as one ctest test.
function(lumrmisc_test name)
  cmake_parse_arguments(arg "" "" "FOLDERS;SOURCES;LIBRARIES" ${ARGN})
  add_executable(test_${name} ${arg_SOURCES})
  lumrmisc_link(test_${name} ${arg_FOLDERS})
  target_link_libraries(test_${name} PRIVATE ${arg_LIBRARIES} GTest::gtest GTest::gtest_main)
  target_include_directories(test_${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_compile_definitions(test_${name} PRIVATE
    LUMRMISC_TEST_DATA="${PROJECT_SOURCE_DIR}/tests/data")
  add_test(NAME ${name} COMMAND test_${name})
endfunction()

# lumrmisc_fuzz(NAME FOLDERS folder... SOURCES file...)
# One libFuzzer program, fuzz_NAME; as a ctest test it runs for LUMRMISC_FUZZ_SECONDS from the
# seed inputs in fuzz/seeds/NAME. Where libFuzzer is missing, a plain main runs the seeds only.
function(lumrmisc_fuzz name)
  cmake_parse_arguments(arg "" "" "FOLDERS;SOURCES" ${ARGN})
  add_executable(fuzz_${name} ${arg_SOURCES})
  lumrmisc_link(fuzz_${name} ${arg_FOLDERS})
  set(seeds ${PROJECT_SOURCE_DIR}/fuzz/seeds/${name})
  file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/found/${name})
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
    add_test(NAME fuzz_${name} COMMAND fuzz_${name}
      -max_total_time=${LUMRMISC_FUZZ_SECONDS} -max_len=4096 -timeout=20 -rss_limit_mb=4096
      -print_final_stats=0 -verbosity=0 ${CMAKE_CURRENT_BINARY_DIR}/found/${name} ${seeds})
  else()
    target_sources(fuzz_${name} PRIVATE ${PROJECT_SOURCE_DIR}/fuzz/plain_main.cpp)
    add_test(NAME fuzz_${name} COMMAND fuzz_${name} ${seeds})
  endif()
endfunction()
