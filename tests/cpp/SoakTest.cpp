// Editor sessions in a row, each running a large authoring script: the heap must be as flat after the
// last session as after the first, and later sessions no slower. Longer runs:
//   KESTDMX_SOAK_SESSIONS=500 build/kest_tests --gtest_filter=FSoakTest.*
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <vector>
#include "KestDMXRunner.h"
#include "UObject/HeadlessObjectRegistry.h"

#include <malloc.h>

// Defined only in the sanitizer build.
extern "C" size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak));

namespace
{
	// Bytes in use: the sanitizer counts exactly what is allocated; glibc's count also holds the freed
	// blocks it keeps for reuse, which settles only after a few dozen sessions, so it gets a wider margin.
	const bool bExactHeapCount = __sanitizer_get_current_allocated_bytes != nullptr;
	const int64 AllowedHeapGrowth = bExactHeapCount ? 16 * 1024 : 256 * 1024;
	int64 GetHeapBytesInUse()
	{
		return static_cast<int64>(bExactHeapCount ? __sanitizer_get_current_allocated_bytes() : mallinfo2().uordblks + mallinfo2().hblkhd);
	}

	// Three libraries of a dozen fixture types (functions, pixel matrix, physical ranges) and a hundred
	// patches each, every patch configured, some types' modes replaced, a fifth of the patches and a
	// type removed; twenty actors with two components each; a stretch undone and redone; conversions.
	const char* const SoakScript = R"(
		local Functions = {{attribute = "Dimmer", default_value = 10}, {attribute = "Pan", data_type = "16bit", physical_to = 540},
			{attribute = "Tilt", data_type = "16bit", use_lsb = true}, {attribute = "Zoom", physical_from = -10, physical_to = 10}}
		for _, Path in ipairs({"/Game/Soak/Stage", "/Game/Soak/Tour", "/Game/Soak/Club"}) do
			assert(editor.create_library(Path))
			local Lib = dmx_library(Path)
			for T = 1, 12 do
				assert(Lib:add("fixture_type", {name = "Type" .. T, modes = {{name = "Basic", functions = {table.unpack(Functions, 1, 1 + T % 4)}}, {name = "Pixels",
					matrix = {enabled = true, x_cells = 4, y_cells = 2, cell_attributes = {{attribute = "Red"}, {attribute = "Green"}}}}}}).mode_count == 2)
			end
			for P = 1, 100 do
				assert(Lib:add("fixture_patch", {name = "Patch" .. P, fixture_type = "Type" .. (P % 12 + 1), active_mode_index = P % 2,
					universe = P // 20 + 1, starting_channel = (P % 20) * 24 + 1, tags = {"soak", "row" .. P % 4}, editor_color = {g = P / 100}}))
				assert(Lib:configure("fixture_patch", "patch" .. P, {active_mode_index = (P + 1) % 2, receive_dmx_in_editor = P % 3 == 0, tags = {"x"}}))
			end
			for T = 1, 12, 3 do
				assert(Lib:configure("fixture_type", "Type" .. T, {modes = {{functions = {{attribute = "Dimmer"}, {attribute = "Pan", data_type = "16bit"}}}}}))
			end
			for P = 1, 100, 5 do assert(Lib:remove("fixture_patch", "Patch" .. P)) end
			assert(Lib:remove("fixture_type", "Type2") and Lib:info().fixture_patch_count == 80)
		end
		for A = 1, 20 do
			assert(editor.spawn_actor("Fixture" .. A, "Fixture " .. A))
			local Handle = dmx_component("Fixture " .. A)
			assert(Handle:add({library = "/Game/Soak/Stage", fixture_patch = "Patch" .. (A * 3 + 2), receive = A % 2 == 0}))
			assert(Handle:add({name = "Second", library = "/Game/Soak/Tour", fixture_patch = "Patch4"}))
			assert(Handle:configure("second", {receive = false}).components[2].fixture_patch == "Patch4")
		end
		for _ = 1, 40 do assert(editor.undo()) end
		for _ = 1, 40 do assert(editor.redo()) end
		local Subsystem = dmx_subsystem()
		for V = 0, 200 do assert(Subsystem:bytes_to_int(Subsystem:int_to_bytes(V * 300, "24bit", V % 2 == 0), V % 2 == 0) == V * 300) end
	)";
}

TEST(FSoakTest, SessionAfterSessionKeepsMemoryAndTimeFlat)
{
	const char* Requested = std::getenv("KESTDMX_SOAK_SESSIONS");
	const int Sessions = std::max(Requested ? std::atoi(Requested) : 20, 3);
	// Reserved up front, so that the figures themselves do not grow the heap.
	std::vector<double> CpuSeconds;
	CpuSeconds.reserve(static_cast<size_t>(Sessions));
	int64 HeapAfterFirst = 0;
	for (int Index = 0; Index < Sessions; ++Index)
	{
		const std::clock_t CpuStart = std::clock();
		{
			FKestDMXSession Session;
			std::string Error;
			ASSERT_TRUE(Session.RunScript(SoakScript, "soak", Error)) << "session " << Index << ": " << Error;
		}
		CpuSeconds.push_back(static_cast<double>(std::clock() - CpuStart) / CLOCKS_PER_SEC);
		ASSERT_EQ(FHeadlessObjectRegistry::Get().Num(), 0) << "objects outlived their editor";
		// The first session is a warm-up: it may fill caches that live as long as the program.
		HeapAfterFirst = Index == 0 ? GetHeapBytesInUse() : HeapAfterFirst;
	}
	const int64 Growth = GetHeapBytesInUse() - HeapAfterFirst;
	const auto GetMedian = [](std::vector<double> Values)
	{
		std::sort(Values.begin(), Values.end());
		return Values[Values.size() / 2];
	};
	const double Median = GetMedian(std::vector<double>(CpuSeconds.begin() + 1, CpuSeconds.end()));
	const double LastMedian = GetMedian(std::vector<double>(CpuSeconds.end() - std::min(5, Sessions - 1), CpuSeconds.end()));
	std::printf("[ soak     ] %d sessions; CPU per session: first %.3f s, median %.3f s, last ones %.3f s; heap growth after the first %lld bytes\n",
		Sessions, CpuSeconds.front(), Median, LastMedian, static_cast<long long>(Growth));
	EXPECT_LT(Growth, AllowedHeapGrowth) << "memory grows from session to session";
	EXPECT_LE(LastMedian, 3.0 * Median) << "later sessions are slower";
}
