# The peers. libmpdec (the engine of Python's decimal) is taken from the
# interpreter's _decimal extension when that keeps its symbol table; Debian 12
# has no package of its own for it. Intel's decimal floating-point library
# (Debian libintelrdfpmath-dev, decimal128 with explicit rounding and flag
# arguments) is shown beside it.
# The interpreter found first may have a stripped extension (Debian's has),
# so interpreters installed with pyenv are tried as well.
find_package(Python3 COMPONENTS Interpreter QUIET)
file(GLOB _zq_pythons $ENV{HOME}/.pyenv/versions/*/bin/python3 $ENV{PYENV_ROOT}/versions/*/bin/python3)
foreach(_zq_python IN LISTS Python3_EXECUTABLE _zq_pythons)
  execute_process(
    COMMAND ${_zq_python} -c
      "import _decimal, os, sysconfig; f = _decimal.__file__; assert b'.symtab' in open(f, 'rb').read(); print(f); print(os.path.join(sysconfig.get_config_var('LIBDIR'), sysconfig.get_config_var('INSTSONAME')))"
    OUTPUT_VARIABLE _zq_mpdec_paths OUTPUT_STRIP_TRAILING_WHITESPACE
    RESULT_VARIABLE _zq_mpdec_result ERROR_QUIET)
  if(_zq_mpdec_result EQUAL 0)
    string(REPLACE "\n" ";" _zq_mpdec_paths "${_zq_mpdec_paths}")
    list(GET _zq_mpdec_paths 0 _zq_mpdec_module)
    list(GET _zq_mpdec_paths 1 _zq_mpdec_python)
    if(EXISTS "${_zq_mpdec_module}" AND EXISTS "${_zq_mpdec_python}")
      target_compile_definitions(${ZQ_BENCH_TARGET} PRIVATE
        ZQ_BENCH_MPDEC_MODULE="${_zq_mpdec_module}"
        ZQ_BENCH_MPDEC_PYTHON="${_zq_mpdec_python}")
      target_link_libraries(${ZQ_BENCH_TARGET} PRIVATE ${CMAKE_DL_LIBS})
      break()
    endif()
  endif()
  unset(_zq_mpdec_module)
endforeach()
if(NOT _zq_mpdec_module)
  message(STATUS "decimal benchmark: no Python _decimal extension with a shared interpreter, no libmpdec peer")
endif()

find_library(ZQ_BID_LIBRARY NAMES libbidgcc000.a bidgcc000)
find_path(ZQ_BID_INCLUDE NAMES bid_functions.h)
if(ZQ_BID_LIBRARY AND ZQ_BID_INCLUDE)
  target_include_directories(${ZQ_BENCH_TARGET} PRIVATE ${ZQ_BID_INCLUDE})
  target_link_libraries(${ZQ_BENCH_TARGET} PRIVATE ${ZQ_BID_LIBRARY})
  target_compile_definitions(${ZQ_BENCH_TARGET} PRIVATE ZQ_BENCH_HAVE_BID=1)
else()
  message(STATUS "decimal benchmark: libintelrdfpmath-dev not found, no decimal128 peer")
endif()
