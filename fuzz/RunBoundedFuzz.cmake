# A short, repeatable libFuzzer run for CTest: a fixed seed and number of runs, new inputs written to
# a scratch folder (the first corpus folder), the checked-in corpus only read.
# cmake -DKEST_FUZZ_EXE=... -DCORPUS=... -DDICT=... -DWORK=... [-DRUNS=2500] [-DMAX_LEN=1024] -P RunBoundedFuzz.cmake
if(NOT DEFINED RUNS)
	set(RUNS 2500)
endif()
if(NOT DEFINED MAX_LEN)
	set(MAX_LEN 1024)
endif()
file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}/corpus")
execute_process(
	COMMAND "${KEST_FUZZ_EXE}" -runs=${RUNS} -seed=1 -max_len=${MAX_LEN} "-dict=${DICT}" -timeout=60 -rss_limit_mb=4096
		"-artifact_prefix=${WORK}/" "${WORK}/corpus" "${CORPUS}"
	RESULT_VARIABLE Result)
if(NOT Result EQUAL 0)
	message(FATAL_ERROR "${KEST_FUZZ_EXE} failed (${Result}); the input that failed is in ${WORK}")
endif()
