# Writes the manual page and the shells' completions of TOOL below FOLDER, as they are installed below share.
foreach(part man:man/man1/mpatool.1 bash:bash-completion/completions/mpatool zsh:zsh/site-functions/_mpatool)
    string(REPLACE ":" ";" part "${part}")
    list(GET part 0 kind)
    list(GET part 1 file)
    cmake_path(GET file PARENT_PATH folder)
    file(MAKE_DIRECTORY "${FOLDER}/${folder}")
    execute_process(COMMAND "${TOOL}" --generate ${kind} OUTPUT_FILE "${FOLDER}/${file}" COMMAND_ERROR_IS_FATAL ANY)
endforeach()
