# The shared library on X11, and without it.
find_package(TCL REQUIRED)
find_package(X11 REQUIRED)
find_package(OpenGL REQUIRED)
find_path(PELT_TCL_INCLUDE tcl.h HINTS ${TCL_INCLUDE_PATH} PATHS /usr/include/tcl8.6 /usr/include/tcl REQUIRED)
find_library(PELT_TCL_STUB tclstub8.6 REQUIRED)
find_library(PELT_TK_STUB tkstub8.6 REQUIRED)

file(GLOB PELT_NATIVE_SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/window/x11/*.cpp)
list(REMOVE_ITEM PELT_NATIVE_SOURCES ${PELT_X11_PLAIN})
# Beside the desktop, drawing without one. Of EGL only the headers are needed here: it is opened when it is used.
find_path(PELT_EGL_INCLUDE EGL/egl.h REQUIRED)
file(GLOB PELT_HEADLESS_SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/window/headless/*.cpp)
list(APPEND PELT_NATIVE_SOURCES ${PELT_HEADLESS_SOURCES})

set(PELT_LIBRARY_PREFIX lib)
add_library(pelt SHARED ${PELT_SCRIPT_SOURCES} ${PELT_NATIVE_SOURCES})
target_link_libraries(pelt PRIVATE pelt_draw pelt_window pelt_x11_plain pelt_core ${PELT_TK_STUB} ${PELT_TCL_STUB} OpenGL::GL
                      X11::X11 X11::Xcursor ${CMAKE_DL_LIBS})
target_link_options(pelt PRIVATE -Wl,--version-script=${CMAKE_CURRENT_SOURCE_DIR}/pelt.map -Wl,-z,relro,-z,now
                    -Wl,--exclude-libs,ALL)
if(NOT PELT_SANITIZE)
  target_link_options(pelt PRIVATE -Wl,--no-undefined -static-libgcc -static-libstdc++)
endif()
set_target_properties(pelt PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}
                      LINK_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/pelt.map)
