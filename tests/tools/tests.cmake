# The end-to-end tests run the built zqrec program.
if(TARGET zqrec)
  add_dependencies(${ZQ_TEST_TARGET} zqrec zqrec_man)
  target_compile_definitions(${ZQ_TEST_TARGET} PRIVATE
    ZQREC_BIN="$<TARGET_FILE:zqrec>"
    ZQREC_MAN="${PROJECT_BINARY_DIR}/tools/zqrec/zqrec.1")
endif()
