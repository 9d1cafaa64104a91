# What only the form for Windows has: the native layer tested with real windows, and the programs that the script tests
# start, in a folder that their runner puts on the path.
add_executable(pelt_test_tool windows/tool.cpp)
target_link_libraries(pelt_test_tool PRIVATE pelt_options)
target_include_directories(pelt_test_tool PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
# Without a console, which would take the keyboard from the window that is tested.
set_target_properties(pelt_test_tool PROPERTIES WIN32_EXECUTABLE ON RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests/tools OUTPUT_NAME env)
foreach(name timeout mktemp xdotool)
  add_custom_command(TARGET pelt_test_tool POST_BUILD
                     COMMAND ${CMAKE_COMMAND} -E create_hardlink $<TARGET_FILE:pelt_test_tool>
                             ${CMAKE_BINARY_DIR}/tests/tools/${name}.exe)
endforeach()

add_pelt_tests(windows pelt_core)
target_sources(windows_native_win32 PRIVATE ${PELT_NATIVE_SOURCES})
target_compile_definitions(windows_native_win32 PRIVATE USE_TCL_STUBS USE_TK_STUBS)
target_include_directories(windows_native_win32 SYSTEM PRIVATE ${PELT_TCL_INCLUDE})
target_link_libraries(windows_native_win32 PRIVATE pelt_window pelt_x11_plain pelt_core ${PELT_NATIVE_LIBRARIES})

# scripts/build-windows packs it when everything is built.
add_test(NAME windows_archive COMMAND ${CMAKE_SOURCE_DIR}/scripts/with-display --private
         ${CMAKE_CURRENT_SOURCE_DIR}/windows/archive ${CMAKE_BINARY_DIR})
set_tests_properties(windows_archive PROPERTIES TIMEOUT 300 LABELS windows)
