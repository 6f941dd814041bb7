# The codecs are internal to the library (hidden symbols), so their tests
# compile them in directly; the COBOL fixtures are compiled at test time.
file(GLOB _zq_codec_srcs CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/types/codec_*.cpp)
target_sources(${ZQ_TEST_TARGET} PRIVATE ${_zq_codec_srcs})
target_compile_definitions(${ZQ_TEST_TARGET} PRIVATE
  ZQ_COBOL_DIR="${CMAKE_CURRENT_SOURCE_DIR}/types/cobol")
