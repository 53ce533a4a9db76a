# Helpers every subsystem uses to declare its tests, benchmarks and fuzz
# targets, so that the three trees (windows, native, fuzz) stay uniform.
#
#   velk_add_test(NAME n SOURCES ... [LIBS ...] [TIMEOUT s])
#     A GoogleTest executable. Windows tree: runs as ONE Wine process through
#     scripts/wine-run.sh. Native tree: runs directly under ASan/UBSan.
#   velk_add_bench(NAME n SOURCES ... [LIBS ...])
#     A benchmark executable; labelled "bench", run only by `make bench`.
#   velk_add_fuzz(NAME n SOURCES ... [LIBS ...])
#     A libFuzzer target; exists only in the fuzz tree (`make fuzz`).

set(VELK_TEST_RESULTS ${CMAKE_BINARY_DIR}/test-results)
file(MAKE_DIRECTORY ${VELK_TEST_RESULTS})

function(_velk_run_command out target)
  if(VELK_WINDOWS)
    set(${out} ${VELK_SOURCE_ROOT}/scripts/wine-run.sh $<TARGET_FILE:${target}> PARENT_SCOPE)
  else()
    set(${out} $<TARGET_FILE:${target}> PARENT_SCOPE)
  endif()
endfunction()

function(velk_add_test)
  cmake_parse_arguments(T "" "NAME;TIMEOUT" "SOURCES;LIBS" ${ARGN})
  if(VELK_FUZZ)
    return()
  endif()
  if(NOT T_TIMEOUT)
    set(T_TIMEOUT 300)
  endif()
  add_executable(${T_NAME} ${T_SOURCES})
  target_link_libraries(${T_NAME} PRIVATE ${T_LIBS} velk_gtest_main)
  _velk_run_command(cmd ${T_NAME})
  # Windows programs see the Unix root as drive Z: under Wine.
  if(VELK_WINDOWS)
    set(xml "xml:Z:${VELK_TEST_RESULTS}/${T_NAME}.xml")
  else()
    set(xml "xml:${VELK_TEST_RESULTS}/${T_NAME}.xml")
  endif()
  add_test(NAME ${T_NAME} COMMAND ${cmd} --gtest_output=${xml})
  set_tests_properties(${T_NAME} PROPERTIES TIMEOUT ${T_TIMEOUT} LABELS unit)
endfunction()

function(velk_add_bench)
  cmake_parse_arguments(T "" "NAME" "SOURCES;LIBS" ${ARGN})
  if(VELK_FUZZ)
    return()
  endif()
  add_executable(${T_NAME} ${T_SOURCES})
  target_link_libraries(${T_NAME} PRIVATE ${T_LIBS} velk_bench)
  _velk_run_command(cmd ${T_NAME})
  add_test(NAME ${T_NAME} COMMAND ${cmd})
  set_tests_properties(${T_NAME} PROPERTIES TIMEOUT 900 LABELS bench)
endfunction()

function(velk_add_fuzz)
  cmake_parse_arguments(T "" "NAME" "SOURCES;LIBS" ${ARGN})
  if(NOT VELK_FUZZ)
    return()
  endif()
  add_executable(${T_NAME} ${T_SOURCES})
  target_link_libraries(${T_NAME} PRIVATE ${T_LIBS})
  target_compile_options(${T_NAME} PRIVATE -fsanitize=fuzzer)
  target_link_options(${T_NAME} PRIVATE -fsanitize=fuzzer)
  set_property(GLOBAL APPEND PROPERTY VELK_FUZZ_TARGETS ${T_NAME})
endfunction()
