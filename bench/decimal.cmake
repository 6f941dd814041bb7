# The peer: IEEE 754 decimal128 arithmetic of the Intel decimal floating-point
# library (Debian libintelrdfpmath-dev), the variant with explicit rounding
# mode and status-flag arguments.
find_library(ZQ_BID_LIBRARY NAMES libbidgcc000.a bidgcc000)
find_path(ZQ_BID_INCLUDE NAMES bid_functions.h)
if(ZQ_BID_LIBRARY AND ZQ_BID_INCLUDE)
  target_include_directories(${ZQ_BENCH_TARGET} PRIVATE ${ZQ_BID_INCLUDE})
  target_link_libraries(${ZQ_BENCH_TARGET} PRIVATE ${ZQ_BID_LIBRARY})
  target_compile_definitions(${ZQ_BENCH_TARGET} PRIVATE ZQ_BENCH_HAVE_BID=1)
else()
  message(STATUS "decimal benchmark: libintelrdfpmath-dev not found, no peer")
endif()
