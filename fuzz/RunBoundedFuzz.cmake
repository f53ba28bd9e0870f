# A short, repeatable kest_fuzz run for CTest: a fixed seed and number of runs, new inputs written to
# a scratch folder (the first corpus folder), the checked-in corpus only read.
# cmake -DKEST_FUZZ_EXE=... -DCORPUS=... -DDICT=... -DWORK=... -P RunBoundedFuzz.cmake
file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}/corpus")
execute_process(
	COMMAND "${KEST_FUZZ_EXE}" -runs=2500 -seed=1 -max_len=1024 "-dict=${DICT}" -timeout=60 -rss_limit_mb=4096
		"-artifact_prefix=${WORK}/" "${WORK}/corpus" "${CORPUS}"
	RESULT_VARIABLE Result)
if(NOT Result EQUAL 0)
	message(FATAL_ERROR "kest_fuzz failed (${Result}); the input that failed is in ${WORK}")
endif()
