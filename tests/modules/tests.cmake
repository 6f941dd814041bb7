# The probe runs beside a private copy of the runtime whose $ORIGIN holds no
# encoding modules: only each test's ZQLIB or LD_LIBRARY_PATH leads to one.
set(_zq_isolated ${CMAKE_CURRENT_BINARY_DIR}/enc-isolated)
add_executable(zq_enc_probe ${CMAKE_CURRENT_SOURCE_DIR}/modules/probe/enc_probe.cpp)
target_include_directories(zq_enc_probe PRIVATE ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(zq_enc_probe PRIVATE zq750util)
set_target_properties(zq_enc_probe PROPERTIES
  RUNTIME_OUTPUT_DIRECTORY ${_zq_isolated}
  BUILD_WITH_INSTALL_RPATH TRUE
  INSTALL_RPATH "$ORIGIN")
find_program(ZQ_PATCHELF patchelf REQUIRED)
add_custom_command(TARGET zq_enc_probe POST_BUILD
  COMMAND ${CMAKE_COMMAND} -E copy $<TARGET_FILE:zq750util>
          ${_zq_isolated}/$<TARGET_SONAME_FILE_NAME:zq750util>
  COMMAND ${ZQ_PATCHELF} --set-rpath "$ORIGIN"  # as an installed runtime
          ${_zq_isolated}/$<TARGET_SONAME_FILE_NAME:zq750util>
  COMMAND ${CMAKE_COMMAND} -E copy $<TARGET_FILE:zq750mem>
          ${_zq_isolated}/$<TARGET_SONAME_FILE_NAME:zq750mem>
  VERBATIM)

# A module named like the one of code set 12 that lacks entry points.
add_library(zq_enc_partial MODULE ${CMAKE_CURRENT_SOURCE_DIR}/modules/probe/partial_module.cpp)
target_include_directories(zq_enc_partial PRIVATE ${PROJECT_SOURCE_DIR}/include)
set_target_properties(zq_enc_partial PROPERTIES PREFIX "" SUFFIX ".so"
  OUTPUT_NAME zqenccp1251 LIBRARY_OUTPUT_DIRECTORY ${_zq_isolated}/partial)

add_dependencies(${ZQ_TEST_TARGET} zq_enc_probe zq_enc_partial)
target_compile_definitions(${ZQ_TEST_TARGET} PRIVATE
  ZQ_ENC_PROBE="${_zq_isolated}/zq_enc_probe"
  ZQ_ENC_PARTIAL_DIR="${_zq_isolated}/partial")
target_link_libraries(${ZQ_TEST_TARGET} PRIVATE ${CMAKE_DL_LIBS})

# The loader wrapper is internal to the runtime; the test compiles it in.
target_sources(${ZQ_TEST_TARGET} PRIVATE ${PROJECT_SOURCE_DIR}/src/platform/dynlib.cpp)
