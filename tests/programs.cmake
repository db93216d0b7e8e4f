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

# For tests/usb-lab, where they meet a real kernel; the long check makes them.
add_executable(usb-lab-chip EXCLUDE_FROM_ALL ${PROGRAM_TESTS}/usb-lab/chip.cpp
               ${PROGRAM_TESTS}/usb/Ft232.cpp)
target_include_directories(usb-lab-chip PRIVATE ${PROGRAM_TESTS})
target_link_libraries(usb-lab-chip PRIVATE corvane_bench)
set_target_properties(usb-lab-chip PROPERTIES UNITY_BUILD OFF)
add_executable(usb-lab-claimer EXCLUDE_FROM_ALL ${PROGRAM_TESTS}/usb-lab/claimer.cpp)
target_link_libraries(usb-lab-claimer PRIVATE PkgConfig::USB)
add_custom_target(usb-lab DEPENDS usb-lab-chip usb-lab-claimer)
