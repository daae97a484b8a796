# Fails unless a program prints exactly what a file of the tree holds. Run as
#   cmake -D PROGRAM=... -D FILE=... -D "REMEDY=..." -P PrintedFileTest.cmake

cmake_minimum_required(VERSION 3.22)

execute_process(COMMAND "${PROGRAM}" OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)
file(READ "${FILE}" held)
if(NOT printed STREQUAL held)
    message(FATAL_ERROR "${FILE} is not what ${PROGRAM} prints; to mend it: ${REMEDY}")
endif()
