# Finds what the enabled targets need; everything comes from the system's packages.

find_package(Threads REQUIRED)
find_package(ICU REQUIRED COMPONENTS uc i18n data)
find_package(Qt5 5.15 REQUIRED COMPONENTS Core Network Gui)
find_package(TBB REQUIRED)
find_package(Boost 1.74 REQUIRED COMPONENTS filesystem)
find_package(simdjson REQUIRED)

# xxHash is used header-only: the sources that need it define XXH_INLINE_ALL before including it.
find_path(KOR_XXHASH_INCLUDE_DIR xxhash.h REQUIRED)
mark_as_advanced(KOR_XXHASH_INCLUDE_DIR)
add_library(kor_xxhash INTERFACE IMPORTED)
set_target_properties(kor_xxhash PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${KOR_XXHASH_INCLUDE_DIR}")

if(KOR_BUILD_TESTS)
    find_package(GTest REQUIRED)
endif()
if(KOR_BUILD_TESTS OR KOR_BUILD_BENCHMARKS)
    find_package(fmt REQUIRED)
    find_package(nlohmann_json REQUIRED)
endif()
if(KOR_BUILD_BENCHMARKS)
    find_package(benchmark REQUIRED)
    find_package(absl REQUIRED)
    find_package(spdlog REQUIRED)
endif()
