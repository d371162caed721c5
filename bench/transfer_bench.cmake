# What transfer_bench.sh runs; it also needs interop_server and the quennet program.
add_executable(side_by_side side_by_side.cpp)
target_link_libraries(side_by_side PRIVATE quennet_options)

add_executable(bench_host bench_host.cpp)
target_compile_definitions(bench_host PRIVATE QUENNET_MODULE="$<TARGET_FILE:Quennet>")
target_link_libraries(bench_host PRIVATE quennet_options hostkit)
add_dependencies(bench_host Quennet)
