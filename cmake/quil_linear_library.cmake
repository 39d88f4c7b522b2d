# The one description of the library that the native, Python and WebAssembly builds share: its
# sources, its include directories and the compile rules its results depend on.
#
# Every .cpp under core/, models/ (with any subfolders) and api/ is part of the library, so a new
# file there is picked up by all three builds at their next configure, with no list to edit.
# quil-retarget's session readers, which the Python package and the explorer compile in so they
# accept exactly the files the tool accepts, are a second, named set.
include_guard(GLOBAL)

get_filename_component(QUIL_LINEAR_ROOT ${CMAKE_CURRENT_LIST_DIR}/.. ABSOLUTE)

file(GLOB QUIL_LINEAR_CORE_SOURCES CONFIGURE_DEPENDS ${QUIL_LINEAR_ROOT}/core/*.cpp)
file(GLOB_RECURSE QUIL_LINEAR_MODEL_SOURCES CONFIGURE_DEPENDS ${QUIL_LINEAR_ROOT}/models/*.cpp)
file(GLOB QUIL_LINEAR_API_SOURCES CONFIGURE_DEPENDS ${QUIL_LINEAR_ROOT}/api/*.cpp)
set(QUIL_LINEAR_SOURCES
  ${QUIL_LINEAR_CORE_SOURCES} ${QUIL_LINEAR_MODEL_SOURCES} ${QUIL_LINEAR_API_SOURCES})

set(QUIL_LINEAR_READER_SOURCES
  ${QUIL_LINEAR_ROOT}/tools/npy.cpp ${QUIL_LINEAR_ROOT}/tools/retarget_io.cpp
  ${QUIL_LINEAR_ROOT}/tools/session_source.cpp ${QUIL_LINEAR_ROOT}/tools/session_file.cpp)

# Results must be bit-exact: every product is rounded before it is added, so no contraction
# into fused multiply-adds, no fast-math and no -march. -O2 is the release level; the options
# come after the environment's flags on the command line, so they win over them.
set(QUIL_LINEAR_EXACT_OPTIONS $<$<CONFIG:Release>:-O2> -fno-fast-math -ffp-contract=off)

# Compiles the library's sources (and, with READERS, the session readers) into TARGET, under
# the exactness rules, with the include directories the sources expect.
function(quil_linear_add_library_sources target)
  cmake_parse_arguments(arg "READERS" "" "" ${ARGN})
  target_sources(${target} PRIVATE ${QUIL_LINEAR_SOURCES})
  target_include_directories(${target} PRIVATE
    $<BUILD_INTERFACE:${QUIL_LINEAR_ROOT}> $<BUILD_INTERFACE:${QUIL_LINEAR_ROOT}/include>)
  if(arg_READERS)
    target_sources(${target} PRIVATE ${QUIL_LINEAR_READER_SOURCES})
    target_include_directories(${target} PRIVATE ${QUIL_LINEAR_ROOT}/tools)
  endif()
  target_compile_features(${target} PRIVATE cxx_std_17)
  target_compile_options(${target} PRIVATE ${QUIL_LINEAR_EXACT_OPTIONS})
endfunction()
