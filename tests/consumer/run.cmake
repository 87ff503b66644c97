# Installs PANELRY_BUILD below WORK, builds the project against that, and runs what came out and what was installed.
set(prefix "${WORK}/prefix")
set(build "${WORK}/build")
file(REMOVE_RECURSE "${prefix}" "${build}")

function(run)
  # No input: what is played from there ends at once.
  execute_process(COMMAND ${ARGV} INPUT_FILE /dev/null COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY TIMEOUT 120)
endfunction()

run("${CMAKE_COMMAND}" --install "${PANELRY_BUILD}" --prefix "${prefix}")
run("${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/project" -B "${build}" -G "${GENERATOR}"
    "-DCMAKE_CXX_COMPILER=${COMPILER}" "-DCMAKE_PREFIX_PATH=${prefix}")
run("${CMAKE_COMMAND}" --build "${build}")

# Loaded and played with, then linked and left at once.
file(WRITE "${build}/userconfig/config.json" [[{"greeter": {"greeting": "good morning"}}]])
run("${build}/host" "good morning, 600000")
run("${build}/examples/minimal_host")

# The desk through its link: it finds the installed library, and its own panels and the greeter fit to it.
run("${prefix}/bin/panelry-desk" --inspect)
run("${prefix}/bin/panelry-desk" --inspect "${build}/adsplugins")
run("${prefix}/bin/panelry-desk" -)
