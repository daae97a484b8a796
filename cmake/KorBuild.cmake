# How each kind of target of this project is made. Sources are collected from the folders, so a new
# file needs no change here; files named for a platform or a processor are left out elsewhere.

set(KOR_INCLUDE_ROOT "${CMAKE_CURRENT_SOURCE_DIR}/modules/foundation")

if(KOR_USE_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    find_program(KOR_CCACHE ccache)
    mark_as_advanced(KOR_CCACHE)
    if(KOR_CCACHE)
        set(CMAKE_CXX_COMPILER_LAUNCHER "${KOR_CCACHE}")
    endif()
endif()

if(KOR_CLANG_TIDY)
    find_program(KOR_CLANG_TIDY_PROGRAM NAMES clang-tidy-14 clang-tidy REQUIRED)
    mark_as_advanced(KOR_CLANG_TIDY_PROGRAM)
    set(CMAKE_CXX_CLANG_TIDY "${KOR_CLANG_TIDY_PROGRAM}" --quiet)
endif()

if(KOR_BUILD_FUZZERS)
    include(CheckCXXSourceCompiles)
    set(CMAKE_REQUIRED_FLAGS -fsanitize=fuzzer)
    check_cxx_source_compiles(
        "extern \"C\" int LLVMFuzzerTestOneInput(unsigned char const*, unsigned long) { return 0; }"
        KOR_HAVE_FUZZING_ENGINE)
    unset(CMAKE_REQUIRED_FLAGS)
endif()

# The file name endings that belong to this processor and those that belong to others.
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|amd64|AMD64)$")
    set(kor_processor_ending x86)
    set(kor_foreign_endings arm64)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
    set(kor_processor_ending arm64)
    set(kor_foreign_endings x86 avx2)
else()
    set(kor_processor_ending "none")
    set(kor_foreign_endings x86 avx2 arm64)
endif()

# The settings that every target shares.
function(kor_configure_target target)
    set_target_properties(${target} PROPERTIES
        CXX_STANDARD 17
        CXX_STANDARD_REQUIRED ON
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual)
    if(KOR_WARNINGS_AS_ERRORS)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    if(KOR_BUILD_FUZZERS AND KOR_HAVE_FUZZING_ENGINE)
        target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
    endif()
    if(KOR_SANITIZE)
        target_compile_options(${target} PRIVATE
            "-fsanitize=${KOR_SANITIZE}" -fno-sanitize-recover=all -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE "-fsanitize=${KOR_SANITIZE}")
    endif()
endfunction()

# Collects the .cpp files below `folder` that this system and processor can compile. Endings:
#   _linux, _mac       the system; _posix is both
#   _x86, _arm64       the processor: 64-bit ones of its family
#   _avx2              _x86 compiled with that extension: called only after asking the processor
#   _generic           any processor that has no file of the same name
function(kor_collect_sources result folder)
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${folder}/*.cpp")
    if(APPLE)
        list(FILTER sources EXCLUDE REGEX "_linux\\.cpp$")
    else()
        list(FILTER sources EXCLUDE REGEX "_mac\\.cpp$")
    endif()
    foreach(ending IN LISTS kor_foreign_endings)
        list(FILTER sources EXCLUDE REGEX "_${ending}\\.cpp$")
    endforeach()
    foreach(source IN LISTS sources)
        if(source MATCHES "_avx2\\.cpp$")
            set_source_files_properties("${source}" PROPERTIES COMPILE_OPTIONS "-mavx2;-mbmi;-mbmi2")
        endif()
        if(source MATCHES "_${kor_processor_ending}\\.cpp$")
            string(REPLACE "_${kor_processor_ending}.cpp" "_generic.cpp" generic "${source}")
            list(REMOVE_ITEM sources "${generic}")
        endif()
    endforeach()
    set(${result} "${sources}" PARENT_SCOPE)
endfunction()

# kor_add_library(<module> ALIAS <name>): the shared library of one module, also known as kor::<name>.
function(kor_add_library module)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "ALIAS" "")
    kor_collect_sources(sources "${KOR_INCLUDE_ROOT}/${module}/main")
    file(GLOB_RECURSE headers CONFIGURE_DEPENDS "${KOR_INCLUDE_ROOT}/${module}/main/*.h")
    add_library(${module} SHARED ${sources} ${headers})
    add_library(kor::${arg_ALIAS} ALIAS ${module})
    kor_configure_target(${module})
    set_target_properties(${module} PROPERTIES
        LINKER_LANGUAGE CXX
        EXPORT_NAME ${arg_ALIAS}
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR})
    target_compile_features(${module} PUBLIC cxx_std_17)
    target_include_directories(${module} PUBLIC
        "$<BUILD_INTERFACE:${KOR_INCLUDE_ROOT}>"
        "$<INSTALL_INTERFACE:${KOR_INSTALL_INCLUDEDIR}>")
    if(NOT APPLE)
        # Threads call the library when they end, so it stays in memory when a host unloads it.
        target_link_options(${module} PRIVATE "LINKER:-z,nodelete")
        if(NOT KOR_SANITIZE)
            target_link_options(${module} PRIVATE "LINKER:-z,defs") # a symbol nobody defines is an error
        endif()
    endif()
    # Lets the optimiser see through calls to the library's own exported functions. An address that is
    # taken still comes from the global table, so a function has one address in the whole process and
    # a thrown type has one type information. The linker's -Bsymbolic-functions would break the
    # first in programs that are not position independent, so it is not used.
    # Calls into other libraries go straight to their targets, which are found when the library loads.
    target_compile_options(${module} PRIVATE
        "$<$<NOT:$<CONFIG:Debug>>:-fno-semantic-interposition;-fno-plt>")
endfunction()

# kor_add_tests(<module> LINK <targets>): <module>_tests from every *Test.cpp of the module. A file
# named *ProcessTest.cpp changes its process for good and becomes a program of its own, and so does
# one named *SoakTest.cpp, which takes long and has the label "soak".
function(kor_add_tests module)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LINK")
    set(folder "${KOR_INCLUDE_ROOT}/${module}/tests")
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${folder}/*Test.cpp")
    file(GLOB support CONFIGURE_DEPENDS "${folder}/support/*.cpp")
    set(own_sources ${sources})
    list(FILTER own_sources INCLUDE REGEX "(Process|Soak)Test\\.cpp$")
    list(FILTER sources EXCLUDE REGEX "(Process|Soak)Test\\.cpp$")
    if(sources)
        kor_add_test_program(${module}_tests ${module} "${sources};${support}" "${arg_LINK}")
    endif()
    foreach(source IN LISTS own_sources)
        get_filename_component(name "${source}" NAME_WE)
        set(properties "")
        if(name MATCHES "SoakTest$")
            set(properties LABELS soak TIMEOUT 900)
        endif()
        kor_add_test_program(${module}_${name} ${module} "${source};${support}" "${arg_LINK}"
            ${properties})
    endforeach()
endfunction()

# What follows the arguments are properties of the tests.
function(kor_add_test_program target module sources libraries)
    include(GoogleTest)
    add_executable(${target} ${sources})
    kor_configure_target(${target})
    target_link_libraries(${target} PRIVATE ${module} ${libraries} GTest::gtest GTest::gtest_main)
    set(soak_percent 100) # how much the long tests do
    if(KOR_SANITIZE)
        set(soak_percent 10)
    endif()
    target_compile_definitions(${target} PRIVATE KOR_SOAK_PERCENT=${soak_percent})
    # Tests are listed when ctest starts, not while building: a program that fails to start is
    # then a failed test, with its message.
    gtest_discover_tests(${target}
        DISCOVERY_MODE PRE_TEST
        DISCOVERY_TIMEOUT 60
        PROPERTIES LABELS ${module} TIMEOUT 300 ${ARGN})
endfunction()

# kor_add_benchmark(<target> <folder>...): one program from the *Benchmark.cpp files of the folders.
function(kor_add_benchmark target)
    set(root "${KOR_INCLUDE_ROOT}/korcoreplatform/benchmarks")
    set(sources "")
    foreach(folder IN LISTS ARGN)
        file(GLOB found CONFIGURE_DEPENDS "${root}/${folder}/*Benchmark.cpp")
        list(APPEND sources ${found})
    endforeach()
    if(NOT sources)
        return()
    endif()
    file(GLOB support CONFIGURE_DEPENDS "${root}/support/*.cpp")
    add_executable(${target} ${sources} ${support})
    kor_configure_target(${target})
    target_link_libraries(${target} PRIVATE korcoreplatform Qt5::Core ICU::uc ICU::i18n kor_xxhash
        fmt::fmt spdlog::spdlog absl::strings absl::str_format Boost::headers Boost::filesystem
        nlohmann_json::nlohmann_json
        benchmark::benchmark benchmark::benchmark_main)
    set_property(GLOBAL APPEND PROPERTY kor_benchmarks ${target})
endfunction()

# kor_add_fuzzers(<module>): one program from each *Fuzz.cpp of the module, around the engine that
# comes with clang or, with another compiler, around a plain driver. Each is also a test, which goes
# through its seeds and the same variations of them every time.
function(kor_add_fuzzers module)
    set(folder "${KOR_INCLUDE_ROOT}/${module}/fuzz")
    set(runs 20000)
    if(KOR_SANITIZE)
        set(runs 4000)
    endif()
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${folder}/*Fuzz.cpp")
    foreach(source IN LISTS sources)
        get_filename_component(target "${source}" NAME_WE)
        add_executable(${target} "${source}")
        kor_configure_target(${target})
        target_link_libraries(${target} PRIVATE ${module} Qt5::Core ICU::uc)
        if(KOR_HAVE_FUZZING_ENGINE)
            target_link_options(${target} PRIVATE -fsanitize=fuzzer)
        else()
            target_sources(${target} PRIVATE "${folder}/support/StandaloneFuzzMain.cpp")
        endif()
        set_property(GLOBAL APPEND PROPERTY kor_fuzzers ${target})
        if(KOR_BUILD_TESTS)
            file(GLOB seeds CONFIGURE_DEPENDS "${folder}/seeds/${target}/*")
            add_test(NAME ${target} COMMAND ${target} -runs=${runs} ${seeds})
            set_tests_properties(${target} PROPERTIES LABELS ${module} TIMEOUT 300)
        endif()
    endforeach()
endfunction()

# Writes the names of the benchmarks and fuzzers, one a line, for scripts.
function(kor_write_program_lists)
    foreach(kind benchmarks fuzzers)
        get_property(names GLOBAL PROPERTY kor_${kind})
        list(JOIN names "\n" lines)
        file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/${kind}.txt" CONTENT "${lines}\n")
    endforeach()
endfunction()

# kor_add_example(<name>): the program of examples/<name>.
function(kor_add_example name)
    file(GLOB sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/examples/${name}/*.cpp")
    if(NOT sources)
        return()
    endif()
    add_executable(${name} ${sources})
    kor_configure_target(${name})
    target_link_libraries(${name} PRIVATE korcoreplatform Threads::Threads)
endfunction()

# kor_add_example_tests(<name> LINK <targets>): <name>_tests from examples/<name>/tests/*.cpp. They run
# the program, whose path the macro <NAME>_PROGRAM holds; what no macro's name may contain is "_" there.
function(kor_add_example_tests name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LINK")
    file(GLOB sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/examples/${name}/tests/*.cpp")
    if(NOT sources)
        return()
    endif()
    kor_add_test_program(${name}_tests korcoreplatform "${sources}" "${arg_LINK}")
    string(MAKE_C_IDENTIFIER "${name}" prefix)
    string(TOUPPER "${prefix}" prefix)
    target_compile_definitions(${name}_tests PRIVATE "${prefix}_PROGRAM=\"$<TARGET_FILE:${name}>\"")
    add_dependencies(${name}_tests ${name})
endfunction()

# kor_add_quoted_file_test(<file> <text>): the text shows all lines of the file, which is compiled.
function(kor_add_quoted_file_test file text)
    set(name "QuotedFile.${file}")
    add_test(NAME "${name}" COMMAND "${CMAKE_COMMAND}"
        -D "FILE=${PROJECT_SOURCE_DIR}/${file}" -D "TEXT=${PROJECT_SOURCE_DIR}/${text}"
        -P "${PROJECT_SOURCE_DIR}/cmake/QuotedFileTest.cmake")
    set_tests_properties("${name}" PROPERTIES LABELS docs TIMEOUT 60)
endfunction()

# kor_add_script_tests(<folder> <module>): the unit tests of a Python module, where there is Python.
function(kor_add_script_tests folder module)
    find_program(KOR_PYTHON python3)
    mark_as_advanced(KOR_PYTHON)
    if(KOR_PYTHON)
        add_test(NAME "Script.${module}" COMMAND "${KOR_PYTHON}" -B -m unittest ${module}
            WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}/${folder}")
        set_tests_properties("Script.${module}" PROPERTIES LABELS scripts TIMEOUT 60)
    endif()
endfunction()

# Another project builds against what is installed, with find_package and with pkg-config.
function(kor_add_consumer_tests)
    foreach(step install find_package pkg_config)
        add_test(NAME Consumer.${step} COMMAND "${CMAKE_COMMAND}"
            -D STEP=${step} -D "BUILD_DIR=${PROJECT_BINARY_DIR}"
            -D "SOURCE_DIR=${PROJECT_SOURCE_DIR}/examples/consumer"
            -D "LIBDIR=${CMAKE_INSTALL_LIBDIR}" -D "CXX=${CMAKE_CXX_COMPILER}"
            -P "${PROJECT_SOURCE_DIR}/cmake/ConsumerTest.cmake")
        set_tests_properties(Consumer.${step} PROPERTIES LABELS consumer TIMEOUT 300)
    endforeach()
    set_tests_properties(Consumer.install PROPERTIES FIXTURES_SETUP kor_installed)
    set_tests_properties(Consumer.find_package Consumer.pkg_config
        PROPERTIES FIXTURES_REQUIRED kor_installed)
endfunction()

# The generator that prints docs/errors.md; a test holds the two together.
function(kor_add_error_catalogue target)
    file(GLOB sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tools/errorcatalogue/*.cpp")
    add_executable(${target} ${sources})
    kor_configure_target(${target})
    target_include_directories(${target} PRIVATE "${KOR_INCLUDE_ROOT}") # it reads the list of ids only
    if(KOR_BUILD_TESTS)
        add_test(NAME ErrorCatalogue.IsUpToDate COMMAND "${CMAKE_COMMAND}"
            -D "PROGRAM=$<TARGET_FILE:${target}>" -D "FILE=${PROJECT_SOURCE_DIR}/docs/errors.md"
            -D "REMEDY=./dev docs" -P "${PROJECT_SOURCE_DIR}/cmake/PrintedFileTest.cmake")
        set_tests_properties(ErrorCatalogue.IsUpToDate PROPERTIES LABELS docs TIMEOUT 60)
    endif()
endfunction()
