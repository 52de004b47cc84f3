# Installs the built library into a scratch prefix, then configures, builds and runs a small
# consumer project that finds it with find_package, and compiles and runs the same program
# with the flags pkg-config gives.
file(REMOVE_RECURSE ${WORK_DIR})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/prefix
  RESULT_VARIABLE rc OUTPUT_QUIET)
if(rc)
  message(FATAL_ERROR "install failed")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/build -G ${GENERATOR}
  -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "consumer configure failed")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/build RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "consumer build failed")
endif()
execute_process(COMMAND ${WORK_DIR}/build/consumer RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "consumer run failed")
endif()

# The pkg-config route: the installed file describes the prefix it was installed to.
file(GLOB_RECURSE pc ${WORK_DIR}/prefix/*/KZCommon.pc)
if(NOT pc)
  message(FATAL_ERROR "KZCommon.pc not installed")
endif()
get_filename_component(pc_dir ${pc} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pc_dir})
execute_process(COMMAND ${PKG_CONFIG} --cflags --libs KZCommon OUTPUT_VARIABLE flags
  RESULT_VARIABLE rc OUTPUT_STRIP_TRAILING_WHITESPACE)
execute_process(COMMAND ${PKG_CONFIG} --variable=libdir KZCommon OUTPUT_VARIABLE libdir
  OUTPUT_STRIP_TRAILING_WHITESPACE)
if(rc OR NOT flags MATCHES "-lKZCommon")
  message(FATAL_ERROR "pkg-config does not know KZCommon: ${flags}")
endif()
file(REAL_PATH ${libdir} libdir)
file(REAL_PATH ${WORK_DIR}/prefix prefix)
if(NOT libdir MATCHES "^${prefix}/")
  message(FATAL_ERROR "KZCommon.pc names ${libdir}, not the prefix it was installed to")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
execute_process(COMMAND ${CXX} ${SOURCE_DIR}/consumer.cpp ${flags} -Wl,-rpath,${libdir}
  -o ${WORK_DIR}/pc-consumer RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "compiling through pkg-config failed")
endif()
execute_process(COMMAND ${WORK_DIR}/pc-consumer RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "the program built through pkg-config failed")
endif()
message(STATUS "installed package found and used through find_package and pkg-config")
