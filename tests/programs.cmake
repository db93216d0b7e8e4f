# What tries the programs as people get them: the package, and a person's whole way on a real
# screen. Instrumented programs are too slow for a person, so these run beside what is released.
set(PROGRAM_TESTS ${PROJECT_SOURCE_DIR}/tests)
add_test(NAME package_test
         COMMAND ${PROGRAM_TESTS}/packaging/check-package.sh ${PROJECT_BINARY_DIR})
add_test(NAME end_to_end_test
         COMMAND ${PROGRAM_TESTS}/end-to-end/program-a-light.sh ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
add_test(NAME at_the_edges_test
         COMMAND ${PROGRAM_TESTS}/end-to-end/at-the-edges.sh ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
set_tests_properties(package_test end_to_end_test at_the_edges_test PROPERTIES TIMEOUT 300)

include(${PROGRAM_TESTS}/updates/programs.cmake)
