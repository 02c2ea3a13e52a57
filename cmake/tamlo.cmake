# Shared build settings for the project's own targets.

set(TAMLO_SANITIZER_FLAGS -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)

# Warnings and (optionally) sanitizers for a target written by us.
function(tamlo_target_defaults target)
  if(MSVC)
    target_compile_options(${target} PRIVATE /W4)
  else()
    target_compile_options(${target} PRIVATE -Wall -Wextra -Werror=return-type)
  endif()
  if(TAMLO_SANITIZE)
    target_compile_options(${target} PRIVATE ${TAMLO_SANITIZER_FLAGS})
    target_link_options(${target} PRIVATE ${TAMLO_SANITIZER_FLAGS})
  endif()
endfunction()

# A static library that becomes part of the extension: hidden symbols, position independent.
function(tamlo_extension_part target)
  tamlo_target_defaults(${target})
  set_target_properties(${target} PROPERTIES
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
endfunction()

# Adds one GoogleTest executable to CTest. Usage: tamlo_add_test(name SOURCES ... LIBS ...)
function(tamlo_add_test name)
  cmake_parse_arguments(T "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  tamlo_target_defaults(${name})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support)
  target_link_libraries(${name} PRIVATE ${T_LIBS} GTest::gtest GTest::gtest_main GTest::gmock)
  include(GoogleTest)
  # Labelled by its folder, the layer, so that a run can take one layer's tests first.
  get_filename_component(layer ${CMAKE_CURRENT_SOURCE_DIR} NAME)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300 LABELS ${layer})
endfunction()
