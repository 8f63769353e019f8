# The image sequence loader against a bare decode loop, and its peak memory.
add_executable(bench_loader ${CMAKE_CURRENT_LIST_DIR}/LoaderBench.cpp)
target_link_libraries(bench_loader PRIVATE importdata PkgConfig::OpenImageIO)
