# The process-wide checks look at blocks made inside ACE.
target_link_libraries(${ZQ_TEST_TARGET} PRIVATE PkgConfig::ACE ${CMAKE_DL_LIBS})
