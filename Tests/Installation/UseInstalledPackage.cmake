# Installs the package into a folder of its own, builds a program against that and
# runs it: cmake -D BUILD=... -D FOLDER=... -D COMPILER=... -D FLAGS=... -P this
function(run)
    execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
    set(output "${output}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${FOLDER}")
run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${FOLDER}/installed"
    --component ParvaneSupport)
run("${CMAKE_COMMAND}" -G Ninja -S "${CMAKE_CURRENT_LIST_DIR}/Consumer" -B "${FOLDER}/consumer"
    "-DCMAKE_PREFIX_PATH=${FOLDER}/installed" "-DCMAKE_CXX_COMPILER=${COMPILER}"
    "-DCMAKE_CXX_FLAGS=${FLAGS}" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF)
run("${CMAKE_COMMAND}" --build "${FOLDER}/consumer")
run("${FOLDER}/consumer/consumer")
if(NOT output STREQUAL "aufx Harare 3")
    message(FATAL_ERROR "The program said: ${output}")
endif()

file(GET_RUNTIME_DEPENDENCIES
    EXECUTABLES "${FOLDER}/consumer/consumer"
    RESOLVED_DEPENDENCIES_VAR libraries)
if(NOT libraries)
    message(FATAL_ERROR "What the program needs cannot be told")
endif()
foreach(library IN LISTS libraries)
    if(NOT library MATCHES "/(libstdc\\+\\+|libc|libm|libgcc_s|ld-linux[^/]*)\\.so[^/]*$")
        message(FATAL_ERROR "The program needs ${library}")
    endif()
endforeach()
