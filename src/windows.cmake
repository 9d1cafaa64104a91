# The shared library on Windows: one file that needs nothing beside the system's own libraries. PELT_TCLTK is the folder
# of a Tcl and Tk for Windows, of which only the headers and the stubs are taken.
enable_language(RC)
set(PELT_TCLTK ${CMAKE_SOURCE_DIR}/build/windows/tcltk CACHE PATH "A Tcl and Tk for Windows")
set(PELT_TCL_INCLUDE ${PELT_TCLTK}/include CACHE INTERNAL "")
set(PELT_STUBS ${PELT_TCLTK}/lib/libtkstub86.a ${PELT_TCLTK}/lib/libtclstub86.a)
foreach(file ${PELT_TCL_INCLUDE}/tk.h ${PELT_STUBS})
  if(NOT EXISTS ${file})
    message(FATAL_ERROR "${file} is missing: scripts/setup-windows makes it")
  endif()
endforeach()

file(GLOB native_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/window/win32/*.cpp)
set(native_resources ${CMAKE_CURRENT_SOURCE_DIR}/window/win32/resources.rc)
file(GLOB PELT_CURSOR_FILES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/window/cursors/*.cur)
set_source_files_properties(${native_resources} PROPERTIES OBJECT_DEPENDS "${PELT_CURSOR_FILES}")
# The tests of the native layer are made of the same.
set(PELT_NATIVE_SOURCES ${native_sources} ${native_resources} CACHE INTERNAL "")
set(PELT_NATIVE_LIBRARIES ${PELT_STUBS} opengl32 gdi32 user32 CACHE INTERNAL "")

set(PELT_LIBRARY_PREFIX "")
add_library(pelt SHARED ${PELT_SCRIPT_SOURCES} ${PELT_NATIVE_SOURCES} ${CMAKE_CURRENT_SOURCE_DIR}/pelt.def)
target_link_libraries(pelt PRIVATE pelt_draw pelt_window pelt_core ${PELT_NATIVE_LIBRARIES})
target_link_options(pelt PRIVATE -Wl,--exclude-all-symbols -Wl,--no-insert-timestamp)
set_target_properties(pelt PROPERTIES PREFIX "${PELT_LIBRARY_PREFIX}" RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}
                      ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/import)
