# The programs once more, with what is otherwise built into them in a file of the test's, and the
# attacks on them.
set(UPDATING ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/updating)
set(SUPPORT ${PROJECT_SOURCE_DIR}/tests/support)
add_library(clock-off MODULE ${SUPPORT}/ClockOff.cpp)
target_link_libraries(clock-off PRIVATE dl)
set_target_properties(clock-off PROPERTIES PREFIX "" LIBRARY_OUTPUT_DIRECTORY ${UPDATING})
add_library(corvane_updates_from_file OBJECT ${SUPPORT}/UpdatesFromFile.cpp
            ${SUPPORT}/TestUpdateSource.cpp)
target_include_directories(corvane_updates_from_file PRIVATE ${PROJECT_SOURCE_DIR}/tests)
target_link_libraries(corvane_updates_from_file PUBLIC corvane_updates corvane_root_installer)
string(TOLOWER corvane_${CORVANE_VENDOR} OWN_VENDOR)
add_executable(updating-corvane)
target_link_libraries(updating-corvane PRIVATE corvane_main corvane_pictures ${OWN_VENDOR}
                      corvane_updates_from_file)
add_executable(updating-corvane-update)
target_link_libraries(updating-corvane-update PRIVATE corvane_update_main ${OWN_VENDOR}
                      corvane_updates_from_file)
add_executable(updating-corvane-install-update
               ${PROJECT_SOURCE_DIR}/src/apps/corvane-install-update.cpp ${SUPPORT}/UpdatesFromFile.cpp)
target_include_directories(updating-corvane-install-update PRIVATE ${PROJECT_SOURCE_DIR}/tests)
target_link_libraries(updating-corvane-install-update PRIVATE corvane_root_installer)
foreach(program corvane corvane-update corvane-install-update)
  set_target_properties(updating-${program} PROPERTIES OUTPUT_NAME ${program}
                        RUNTIME_OUTPUT_DIRECTORY ${UPDATING})
  add_dependencies(updating-${program} clock-off)
endforeach()

set(ATTACKS python3 ${PROJECT_SOURCE_DIR}/tests/updates/attacks.py ${UPDATING})
add_test(NAME updates_attacks_test COMMAND ${ATTACKS})
add_test(NAME updates_attacks_long_test COMMAND ${ATTACKS} --long)
set_tests_properties(updates_attacks_test updates_attacks_long_test PROPERTIES TIMEOUT 600
                     RESOURCE_LOCK updating)
set_tests_properties(updates_attacks_long_test PROPERTIES LABELS long)
