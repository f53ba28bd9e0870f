// Compiled at -O3 with warnings as errors in the project's gcc builds (see CMakeLists.txt): a plain
// Release build optimises at -O3, where gcc 12 has warned falsely about the digest's string building.
#include "DMXStateDigest.h"

DMXStateDigest::FDigest TakeDigestAtO3(const UWorld* World)
{
	return DMXStateDigest::TakeDigest(World);
}
