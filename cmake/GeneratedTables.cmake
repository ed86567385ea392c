# trn_generate_tables(TARGET target DIRECTORY folder OUTPUT header...): runs the table generator of src/decoder/tables at
# build time, for headers included as "folder/header"; its inputs are the CSV files beside it.

find_package(Python3 REQUIRED COMPONENTS Interpreter)

function(trn_generate_tables)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "TARGET;DIRECTORY" "OUTPUT")
    set(tables "${PROJECT_SOURCE_DIR}/src/decoder/tables")
    set(generated "${PROJECT_BINARY_DIR}/generated")
    file(GLOB inputs CONFIGURE_DEPENDS "${tables}/*.csv" "${tables}/*.py")
    list(TRANSFORM arg_OUTPUT PREPEND "${generated}/${arg_DIRECTORY}/" OUTPUT_VARIABLE outputs)
    add_custom_command(
        OUTPUT ${outputs}
        COMMAND Python3::Interpreter "${tables}/generate.py" "${generated}/${arg_DIRECTORY}"
        DEPENDS ${inputs}
        COMMENT "Generating decoder tables"
        VERBATIM)
    target_sources(${arg_TARGET} PRIVATE ${outputs})
    target_include_directories(${arg_TARGET} PUBLIC "${generated}")

    # Static analysis reads the sources without building them; it needs these headers first.
    if(NOT TARGET trn_generated)
        add_custom_target(trn_generated)
    endif()
    add_custom_target(${arg_TARGET}_tables DEPENDS ${outputs})
    add_dependencies(trn_generated ${arg_TARGET}_tables)
endfunction()
