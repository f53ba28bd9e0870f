# cmake -DKESTDMX=... -DWORK=<scratch folder> -P RunUnreadableFolder.cmake: a folder under Content/ that
# the user cannot read stops inspect and run with its name, and the library in it is not saved over.
# Root reads every folder, so when this runs as root the checks run as nobody (setpriv); without
# setpriv the test is skipped.
set(PROJECT "${WORK}/project")
file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${PROJECT}")
file(WRITE "${WORK}/build.lua" "assert(editor.create_library('/Game/DMX/Stage') and editor.create_library('/Game/Tour/Rig'))\n"
	"assert(dmx_library('/Game/Tour/Rig'):add('fixture_type', {name = 'Par'}) and dmx_library('/Game/Tour/Rig'):add('fixture_type', {name = 'Wash'}))\n")
file(WRITE "${WORK}/create.lua" "assert(editor.create_library('/Game/Tour/Rig'))\n")
execute_process(COMMAND "${KESTDMX}" run --project "${PROJECT}" "${WORK}/build.lua" RESULT_VARIABLE result)
if(NOT result EQUAL 0)
	message(FATAL_ERROR "kestdmx run build.lua: exit code ${result}")
endif()
file(SHA256 "${PROJECT}/Content/Tour/Rig.dmxlib.json" rig_before)

set(as_user)
execute_process(COMMAND id -u OUTPUT_VARIABLE uid OUTPUT_STRIP_TRAILING_WHITESPACE)
if(uid STREQUAL "0")
	find_program(SETPRIV setpriv)
	if(NOT SETPRIV)
		message("SKIP: running as root without setpriv, so no user who cannot read a folder")
		file(REMOVE_RECURSE "${WORK}")
		return()
	endif()
	set(as_user "${SETPRIV}" --reuid=65534 --regid=65534 --clear-groups --)
	# nobody may enter the project and make its lock file, but not read Content/Tour.
	file(CHMOD "${WORK}" "${PROJECT}" DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_WRITE GROUP_EXECUTE
		WORLD_READ WORLD_WRITE WORLD_EXECUTE)
	file(CHMOD "${PROJECT}/.kestdmx.lock" PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ GROUP_WRITE WORLD_READ WORLD_WRITE)
endif()
file(CHMOD "${PROJECT}/Content/Tour" DIRECTORY_PERMISSIONS OWNER_WRITE)

execute_process(COMMAND ${as_user} "${KESTDMX}" inspect --project "${PROJECT}" RESULT_VARIABLE result ERROR_VARIABLE errors OUTPUT_QUIET)
if(NOT result EQUAL 1 OR NOT errors MATCHES "Content/Tour: cannot be read: Permission denied")
	message(FATAL_ERROR "kestdmx inspect: exit code ${result}, expected 1 naming Content/Tour; stderr: ${errors}")
endif()
execute_process(COMMAND ${as_user} "${KESTDMX}" run --project "${PROJECT}" "${WORK}/create.lua" RESULT_VARIABLE result ERROR_VARIABLE errors)
if(NOT result EQUAL 1 OR NOT errors MATCHES "Content/Tour: cannot be read: Permission denied")
	message(FATAL_ERROR "kestdmx run create.lua: exit code ${result}, expected 1 naming Content/Tour; stderr: ${errors}")
endif()

file(CHMOD "${PROJECT}/Content/Tour" DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
file(SHA256 "${PROJECT}/Content/Tour/Rig.dmxlib.json" rig_after)
if(NOT rig_before STREQUAL rig_after)
	message(FATAL_ERROR "the library in the unreadable folder was saved over")
endif()
file(REMOVE_RECURSE "${WORK}")
