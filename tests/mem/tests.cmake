# The allocator module is tested through its own C interface.
target_link_libraries(${ZQ_TEST_TARGET} PRIVATE zq750mem)
