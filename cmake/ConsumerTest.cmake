# One step of the test that another project can use what is installed. Run as
#   cmake -D STEP=... -D BUILD_DIR=... -D SOURCE_DIR=... -D LIBDIR=... -D CXX=... -P ConsumerTest.cmake
# where STEP is install, find_package or pkg_config.

cmake_minimum_required(VERSION 3.22)

set(work "${BUILD_DIR}/consumer test") # a path that quoting has to survive
set(prefix "${work}/prefix")
set(expected "HELLO, Zoë: 3 units\nFormat string ends with an incomplete marker.\n")

function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(check_program program)
    execute_process(COMMAND "${program}" OUTPUT_VARIABLE printed RESULT_VARIABLE result)
    if(NOT result EQUAL 0 OR NOT printed STREQUAL expected)
        message(FATAL_ERROR "The program ended with ${result} and printed:\n${printed}\nexpected:\n${expected}")
    endif()
endfunction()

if(STEP STREQUAL "install")
    file(REMOVE_RECURSE "${work}")
    # Installed to one place and moved to another: nothing may remember the first.
    run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${work}/elsewhere")
    file(RENAME "${work}/elsewhere" "${prefix}")
elseif(STEP STREQUAL "find_package")
    set(build "${work}/find_package")
    run("${CMAKE_COMMAND}" -G Ninja -S "${SOURCE_DIR}" -B "${build}"
        "-DCMAKE_CXX_COMPILER=${CXX}" "-DCMAKE_PREFIX_PATH=${prefix}")
    run("${CMAKE_COMMAND}" --build "${build}")
    check_program("${build}/consumer")
elseif(STEP STREQUAL "pkg_config")
    set(ENV{PKG_CONFIG_PATH} "${prefix}/${LIBDIR}/pkgconfig:$ENV{PKG_CONFIG_PATH}")
    execute_process(COMMAND pkg-config --cflags --libs korcoreplatform
        OUTPUT_VARIABLE flags COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(flags UNIX_COMMAND "${flags}")
    set(program "${work}/consumer")
    run("${CXX}" -std=c++17 "${SOURCE_DIR}/main.cpp" -o "${program}" ${flags}
        "-Wl,-rpath,${prefix}/${LIBDIR}")
    check_program("${program}")
else()
    message(FATAL_ERROR "Unknown step: ${STEP}")
endif()
