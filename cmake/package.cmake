# The installed package: the two shared libraries with versioned sonames,
# every public header, a CMake package (find_package(twfileio) gives
# twfileio::twfileio and twfileio::twhost), a pkg-config file, and the Python
# module when it is built.
#
#   cmake --install build --prefix P
#
# Installed libraries carry no RUNPATH but $ORIGIN: libtwhost's own load of
# libtwfileio (the library pins itself by name) looks beside it.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(TW_SOVERSION ${PROJECT_VERSION_MAJOR})
foreach(lib twfileio twhost)
  set_target_properties(${lib} PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${TW_SOVERSION}
    INSTALL_RPATH "$ORIGIN")
endforeach()
target_include_directories(twhost INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
# The embedder's header is C++20 (spans, constraints).
target_compile_features(twfileio PUBLIC cxx_std_20)

install(TARGETS twfileio twhost
  EXPORT twfileioTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h")

set(TW_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/twfileio)
install(EXPORT twfileioTargets NAMESPACE twfileio:: DESTINATION ${TW_CMAKE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/twfileioConfig.cmake.in
  ${PROJECT_BINARY_DIR}/package/twfileioConfig.cmake
  INSTALL_DESTINATION ${TW_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/package/twfileioConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/package/twfileioConfig.cmake
  ${PROJECT_BINARY_DIR}/package/twfileioConfigVersion.cmake
  DESTINATION ${TW_CMAKE_DIR})

# Paths relative to the file itself, so that `cmake --install --prefix`
# moves them along.
file(RELATIVE_PATH TW_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${PROJECT_SOURCE_DIR}/cmake/twfileio.pc.in ${PROJECT_BINARY_DIR}/package/twfileio.pc
  @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/package/twfileio.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# ---- the Python module ----------------------------------------------------------
# On when Debian's python3 has numpy and pybind11 is installed; built into
# build/python, where the tests import it from.
if(EXISTS /usr/bin/python3 AND NOT Python_EXECUTABLE)
  set(Python_EXECUTABLE /usr/bin/python3)
endif()
find_package(Python COMPONENTS Interpreter Development.Module)
find_package(pybind11 CONFIG QUIET)
set(TW_PYTHON_DEFAULT OFF)
if(Python_FOUND AND pybind11_FOUND)
  execute_process(COMMAND ${Python_EXECUTABLE} -c "import numpy"
    RESULT_VARIABLE TW_NUMPY_MISSING OUTPUT_QUIET ERROR_QUIET)
  if(TW_NUMPY_MISSING EQUAL 0)
    set(TW_PYTHON_DEFAULT ON)
  endif()
endif()
option(TW_PYTHON "Build the Python module twfileio (needs pybind11 and numpy)"
  ${TW_PYTHON_DEFAULT})
if(TW_PYTHON)
  enable_testing()
  add_subdirectory(python)
endif()
