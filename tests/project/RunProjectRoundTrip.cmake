# Round trip of a project on disk through the runner:
#   cmake -DKESTDMX=... -DSCRIPTS=<tests/project> -DWORK=<scratch folder> -P RunProjectRoundTrip.cmake
# build_project.lua saves a project, check_project.lua reads it back (and, changing nothing, leaves the
# files alone), and a script that fails after making changes saves nothing.

set(PROJECT "${WORK}/project")
file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${PROJECT}")
set(ENV{KESTDMX_SNAPSHOT} "${WORK}/snapshot.lua")

function(run_kestdmx expected_result)
	execute_process(COMMAND "${KESTDMX}" run --project "${PROJECT}" ${ARGN} RESULT_VARIABLE result)
	if(NOT result EQUAL expected_result)
		message(FATAL_ERROR "kestdmx run ${ARGN}: exit code ${result}, expected ${expected_result}")
	endif()
endfunction()

function(hash_project out_var)
	file(GLOB_RECURSE files LIST_DIRECTORIES false "${PROJECT}/*")
	list(SORT files)
	set(hashes "")
	foreach(file IN LISTS files)
		file(SHA256 "${file}" hash)
		string(APPEND hashes "${file} ${hash}\n")
	endforeach()
	set(${out_var} "${hashes}" PARENT_SCOPE)
endfunction()

run_kestdmx(0 "${SCRIPTS}/build_project.lua")
foreach(file Content/DMX/Stage.dmxlib.json Content/DMX/Floor/Pars.dmxlib.json Content/Maps/Untitled.level.json)
	if(NOT EXISTS "${PROJECT}/${file}")
		message(FATAL_ERROR "the build script did not save ${file}")
	endif()
endforeach()
hash_project(saved)

run_kestdmx(0 "${SCRIPTS}/check_project.lua")
hash_project(after_check)
if(NOT saved STREQUAL after_check)
	message(FATAL_ERROR "a run that changed nothing rewrote the project")
endif()

file(WRITE "${WORK}/fails.lua" "assert(dmx_library('/Game/DMX/Stage'):remove('fixture_patch', 'Spot 1'))\nassert(editor.spawn_actor('Extra'))\nerror('stop')\n")
run_kestdmx(1 "${SCRIPTS}/check_project.lua" "${WORK}/fails.lua")
hash_project(after_failure)
if(NOT saved STREQUAL after_failure)
	message(FATAL_ERROR "a failed run wrote to the project")
endif()

file(REMOVE_RECURSE "${WORK}")
