# Installs the build tree into a scratch prefix, then builds and runs a small
# program against it twice: through find_package and through pkg-config.
# Expects -DBUILD_DIR=... -DSOURCE_DIR=... -DWORK_DIR=...
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix}
                RESULT_VARIABLE rc OUTPUT_QUIET)
if(rc)
  message(FATAL_ERROR "install failed: ${rc}")
endif()

execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR}/examples/consumer -B ${WORK_DIR}/consumer
                        -DCMAKE_PREFIX_PATH=${prefix} RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "find_package(zq750util) from the installed prefix failed")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/consumer RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "building against the installed prefix failed")
endif()
execute_process(COMMAND ${WORK_DIR}/consumer/consumer RESULT_VARIABLE rc OUTPUT_VARIABLE out)
if(rc)
  message(FATAL_ERROR "consumer built with find_package failed: ${rc} ${out}")
endif()

# pkg-config: compile the same program with the flags the .pc file gives.
find_program(PKG_CONFIG pkg-config REQUIRED)
find_program(CXX NAMES c++ g++ REQUIRED)
file(GLOB_RECURSE pcfile ${prefix}/*/zq750util.pc)
get_filename_component(pcdir "${pcfile}" DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pcdir})
execute_process(COMMAND ${PKG_CONFIG} --cflags --libs zq750util OUTPUT_VARIABLE flags
                RESULT_VARIABLE rc OUTPUT_STRIP_TRAILING_WHITESPACE)
if(rc)
  message(FATAL_ERROR "pkg-config does not know zq750util")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
execute_process(COMMAND ${CXX} -std=c++17 ${SOURCE_DIR}/examples/consumer/main.cpp ${flags}
                        -Wl,-rpath,${prefix}/lib -o ${WORK_DIR}/consumer-pc RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "compiling with pkg-config flags failed")
endif()
execute_process(COMMAND ${WORK_DIR}/consumer-pc RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "consumer built with pkg-config failed: ${rc}")
endif()
