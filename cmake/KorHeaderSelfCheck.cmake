# The target header_selfcheck compiles every public header alone, so that each includes what it uses. The
# headers of korsys are compiled without Qt within reach.

function(kor_add_header_selfcheck target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "HEADERS;LINK")
    set(sources "")
    foreach(header IN LISTS arg_HEADERS)
        string(REGEX REPLACE "\\.h$" ".cpp" name "${header}")
        set(source "${PROJECT_BINARY_DIR}/${target}/${name}")
        file(CONFIGURE OUTPUT "${source}" CONTENT "#include \"${header}\" // IWYU pragma: keep\n")
        list(APPEND sources "${source}")
    endforeach()
    if(NOT sources)
        return()
    endif()
    add_library(${target} OBJECT EXCLUDE_FROM_ALL ${sources})
    kor_configure_target(${target})
    set_target_properties(${target} PROPERTIES CXX_CLANG_TIDY "") # sources show their headers to it
    target_link_libraries(${target} PRIVATE ${arg_LINK})
    add_dependencies(header_selfcheck ${target})
endfunction()

add_custom_target(header_selfcheck)
foreach(module korsys korcoreplatform)
    file(GLOB_RECURSE ${module}_headers CONFIGURE_DEPENDS
        RELATIVE "${KOR_INCLUDE_ROOT}" "${KOR_INCLUDE_ROOT}/${module}/main/*.h")
    list(FILTER ${module}_headers EXCLUDE REGEX "_p\\.h$")
endforeach()
kor_add_header_selfcheck(header_selfcheck_korsys HEADERS ${korsys_headers} LINK korsys)
kor_add_header_selfcheck(header_selfcheck_korcoreplatform HEADERS ${korcoreplatform_headers}
    LINK korcoreplatform)

# A program that never touches Qt can use these without having Qt's headers.
set(qt_free_headers ${korcoreplatform_headers})
list(FILTER qt_free_headers INCLUDE REGEX "/main/string/(TString|TFormatString|TScanString)\\.h$")
if(NOT qt_free_headers)
    message(SEND_ERROR "The headers that must do without Qt are not where they are looked for.")
endif()
kor_add_header_selfcheck(header_selfcheck_without_qt HEADERS ${qt_free_headers} LINK korsys)
