# What transfer_bench.sh runs; it also needs the quennet program.
add_executable(side_by_side side_by_side.cpp)
target_link_libraries(side_by_side PRIVATE quennet_options)

add_executable(listing_memory listing_memory.cpp)
target_compile_definitions(listing_memory PRIVATE QUENNET_MODULE="$<TARGET_FILE:Quennet>")
target_link_libraries(listing_memory PRIVATE quennet_options hostkit)
add_dependencies(listing_memory Quennet)
