# The codec benchmark compares against GnuCOBOL's runtime: codecs.cbl is
# compiled next to the benchmark when cobc is available.
find_program(ZQ_COBC cobc)
if(ZQ_COBC)
  set(_zq_cobol_bench ${CMAKE_CURRENT_BINARY_DIR}/codecs_cobol)
  add_custom_command(OUTPUT ${_zq_cobol_bench}
    COMMAND ${ZQ_COBC} -x -free -O2 -o ${_zq_cobol_bench} ${CMAKE_CURRENT_SOURCE_DIR}/codecs.cbl
    DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/codecs.cbl
    COMMENT "Compiling the COBOL side of the codec benchmark")
  add_custom_target(zq_bench_codecs_cobol DEPENDS ${_zq_cobol_bench})
  add_dependencies(${ZQ_BENCH_TARGET} zq_bench_codecs_cobol)
  target_compile_definitions(${ZQ_BENCH_TARGET} PRIVATE ZQ_COBOL_BENCH="${_zq_cobol_bench}")
endif()
