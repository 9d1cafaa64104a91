# libpng for a system that has none: a part of the library here, made of the sources of this system's package and of
# its zlib for mingw-w64. PELT_PNG_SOURCE is the folder of those sources.
set(PELT_PNG_SOURCE ${CMAKE_SOURCE_DIR}/build/windows/sources/libpng1.6 CACHE PATH "The sources of libpng")
if(NOT EXISTS ${PELT_PNG_SOURCE}/pngwrite.c)
  message(FATAL_ERROR "${PELT_PNG_SOURCE}/pngwrite.c is missing: scripts/setup-windows fetches it")
endif()
configure_file(${PELT_PNG_SOURCE}/scripts/pnglibconf.h.prebuilt ${CMAKE_BINARY_DIR}/png/pnglibconf.h COPYONLY)
set(PELT_PNG_SOURCES png pngerror pngget pngmem pngpread pngread pngrio pngrtran pngrutil pngset pngtrans pngwio pngwrite
    pngwtran pngwutil)
list(TRANSFORM PELT_PNG_SOURCES PREPEND ${PELT_PNG_SOURCE}/)
list(TRANSFORM PELT_PNG_SOURCES APPEND .c)
add_library(pelt_png STATIC ${PELT_PNG_SOURCES})
target_include_directories(pelt_png SYSTEM PUBLIC ${PELT_PNG_SOURCE} ${CMAKE_BINARY_DIR}/png)
# By its path: its name alone would find the form of it that is a library of its own.
find_library(PELT_ZLIB libz.a REQUIRED)
target_link_libraries(pelt_png PUBLIC ${PELT_ZLIB})
