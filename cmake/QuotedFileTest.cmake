# Fails unless a text shows a source file, whole and to the letter, as a block of code. Run as
#   cmake -D FILE=... -D TEXT=... -P QuotedFileTest.cmake

cmake_minimum_required(VERSION 3.22)

file(READ "${FILE}" code)
file(READ "${TEXT}" text)
string(FIND "${text}" "```cpp\n${code}```\n" at)
if(at EQUAL -1)
    message(FATAL_ERROR "${TEXT} does not show the lines of ${FILE}")
endif()
