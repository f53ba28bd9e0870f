// Many editor sessions in a row, each running a large authoring script: memory must come back
// after every session and no session may get slower than the ones before. The default run is
// short enough for every test run; a longer one is a matter of setting KESTDMX_SOAK_SESSIONS, e.g.
//   KESTDMX_SOAK_SESSIONS=500 build/kest_tests --gtest_filter=FSoakTest.*
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <string>
#include <vector>
#include "KestDMXRunner.h"
#include "UObject/HeadlessObjectRegistry.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KEST_SOAK_WITH_ASAN 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define KEST_SOAK_WITH_ASAN 1
#endif

#if defined(KEST_SOAK_WITH_ASAN)
#include <sanitizer/allocator_interface.h>
#else
#include <malloc.h>
#endif

namespace
{
	// Bytes the program holds on the heap right now. The sanitizer counts exactly what is allocated;
	// glibc's count also holds the freed blocks it keeps cached for reuse, which settles only after
	// a few dozen sessions, so it gets a wider margin. (Under valgrind glibc's count reads 0.)
#if defined(KEST_SOAK_WITH_ASAN)
	const int64 AllowedHeapGrowth = 16 * 1024;

	int64 GetHeapBytesInUse()
	{
		return static_cast<int64>(__sanitizer_get_current_allocated_bytes());
	}
#else
	const int64 AllowedHeapGrowth = 256 * 1024;

	int64 GetHeapBytesInUse()
	{
		const struct mallinfo2 Info = mallinfo2();
		return static_cast<int64>(Info.uordblks + Info.hblkhd);
	}
#endif

	int64 GetResidentBytes()
	{
		std::ifstream Statm("/proc/self/statm");
		int64 Pages = 0;
		int64 Resident = 0;
		Statm >> Pages >> Resident;
		return Resident * 4096;
	}

	// CPU time of this thread: what the session cost, however busy the machine is.
	double GetThreadCpuSeconds()
	{
		timespec Now{};
		clock_gettime(CLOCK_THREAD_CPUTIME_ID, &Now);
		return static_cast<double>(Now.tv_sec) + static_cast<double>(Now.tv_nsec) * 1e-9;
	}

	int GetSessionCount()
	{
		const char* Text = std::getenv("KESTDMX_SOAK_SESSIONS");
		const int Count = Text != nullptr ? std::atoi(Text) : 0;
		return Count >= 3 ? Count : 20;
	}

	// Lua's allocator, counting the bytes the session's Lua state holds.
	struct FLuaBytes
	{
		int64 Current = 0;
		int64 Peak = 0;
	};

	void* CountLuaBytes(void* UserData, void* Block, size_t OldSize, size_t NewSize)
	{
		FLuaBytes& Bytes = *static_cast<FLuaBytes*>(UserData);
		const int64 Old = Block != nullptr ? static_cast<int64>(OldSize) : 0;
		if (NewSize == 0)
		{
			std::free(Block);
			Bytes.Current -= Old;
			return nullptr;
		}
		void* Resized = std::realloc(Block, NewSize);
		if (Resized != nullptr)
		{
			Bytes.Current += static_cast<int64>(NewSize) - Old;
			Bytes.Peak = std::max(Bytes.Peak, Bytes.Current);
		}
		return Resized;
	}

	// Three libraries of a dozen fixture types (with functions, a pixel matrix and physical ranges)
	// and a hundred patches each; every patch configured, some types rebuilt, a fifth of the patches
	// and a type removed; twenty actors with two components each; a stretch undone and redone;
	// conversions. Leaves the number of entities it made in EntityCount.
	const char* const SoakScript = R"(
		local Libraries = {"/Game/Soak/Stage", "/Game/Soak/Tour", "/Game/Soak/Club"}
		local Types, Patches = 12, 100
		local Attributes = {"Dimmer", "Pan", "Tilt", "Color", "Zoom", "Focus"}
		EntityCount = 0
		for _, Path in ipairs(Libraries) do
			assert(editor.create_library(Path))
			local Lib = dmx_library(Path)
			for T = 1, Types do
				local Functions = {}
				for F = 1, 1 + T % 6 do
					Functions[F] = {attribute = Attributes[F], name = "F" .. F, default_value = F * 10,
						data_type = F % 2 == 0 and "16bit" or "8bit", physical_from = 0, physical_to = 100}
				end
				local Added = Lib:add("fixture_type", {name = "Type" .. T, category = "Moving Head", modes = {
					{name = "Basic", functions = Functions},
					{name = "Pixels", functions = {{attribute = "Dimmer"}}, matrix = {enabled = true, x_cells = 4, y_cells = 2,
						cell_attributes = {{attribute = "Red"}, {attribute = "Green"}, {attribute = "Blue"}}}},
				}})
				assert(Added and Added.mode_count == 2, "fixture type " .. T)
				EntityCount = EntityCount + 1
			end
			for P = 1, Patches do
				local Added = Lib:add("fixture_patch", {name = "Patch" .. P, fixture_type = "Type" .. (P % Types + 1), active_mode_index = P % 2,
					universe = P // 20 + 1, starting_channel = (P % 20) * 24 + 1, tags = {"soak", "row" .. P % 4},
					editor_color = {r = 0.5, g = P / Patches}})
				assert(Added and Added.channel_span > 0, "patch " .. P)
				EntityCount = EntityCount + 1
			end
			for P = 1, Patches do
				assert(Lib:configure("fixture_patch", "patch" .. P, {active_mode_index = (P + 1) % 2, universe = P // 20 + 2,
					receive_dmx_in_editor = P % 3 == 0, tags = {"configured"}}))
			end
			for T = 1, Types, 3 do
				assert(Lib:configure("fixture_type", "Type" .. T, {category = "Static",
					modes = {{name = "Only", functions = {{attribute = "Dimmer"}, {attribute = "Pan", data_type = "16bit"}}}}}))
			end
			for P = 1, Patches, 5 do
				assert(Lib:remove("fixture_patch", "Patch" .. P))
			end
			assert(Lib:remove("fixture_type", "Type2"))
			local Info = Lib:info()
			assert(Info.fixture_patch_count == Patches - Patches // 5 and Info.fixture_type_count == Types - 1, "counts")
			assert(#Info.fixture_patches[1].attribute_channels > 0, "attribute maps")
		end
		for A = 1, 20 do
			assert(editor.spawn_actor("Fixture" .. A, "Fixture " .. A))
			local Handle = dmx_component("Fixture " .. A)
			assert(Handle:add({library = Libraries[A % 3 + 1], fixture_patch = "Patch" .. (A * 3 + 2), receive = A % 2 == 0}))
			assert(Handle:add({name = "Second", library = Libraries[1], fixture_patch = "Patch4"}))
			assert(Handle:configure("second", {receive = false}).component_count == 2)
			assert(Handle:info().components[2].fixture_patch == "Patch4")
		end
		for _ = 1, 40 do
			assert(editor.undo())
		end
		for _ = 1, 40 do
			assert(editor.redo())
		end
		assert(editor.transaction_depth() == 0)
		local Subsystem = dmx_subsystem()
		for V = 0, 200 do
			local Msb = V % 2 == 0
			assert(Subsystem:bytes_to_int(Subsystem:int_to_bytes(V * 300, "24bit", Msb), Msb) == V * 300)
		end
	)";

	double GetMedian(std::vector<double> Values)
	{
		std::sort(Values.begin(), Values.end());
		return Values[Values.size() / 2];
	}
}

TEST(FSoakTest, SessionAfterSessionKeepsMemoryAndTimeFlat)
{
	const int Sessions = GetSessionCount();
	// Reserved up front, so that the figures themselves do not grow the heap while it is measured.
	std::vector<double> CpuSeconds;
	std::vector<int64> HeapAfter;
	CpuSeconds.reserve(static_cast<size_t>(Sessions));
	HeapAfter.reserve(static_cast<size_t>(Sessions));
	int64 Entities = 0;
	int64 LuaPeak = 0;
	const int64 HeapAtStart = GetHeapBytesInUse();
	const auto SoakStart = std::chrono::steady_clock::now();
	for (int Index = 0; Index < Sessions; ++Index)
	{
		const double CpuStart = GetThreadCpuSeconds();
		FLuaBytes LuaBytes;
		{
			FKestDMXSession Session(FHeadlessEditorOptions(), &CountLuaBytes, &LuaBytes);
			std::string Error;
			ASSERT_TRUE(Session.RunScript(SoakScript, "soak", Error)) << "session " << Index << ": " << Error;
			Entities += Session.GetLua().GetState()["EntityCount"].get<int64>();
		}
		CpuSeconds.push_back(GetThreadCpuSeconds() - CpuStart);
		HeapAfter.push_back(GetHeapBytesInUse());
		LuaPeak = std::max(LuaPeak, LuaBytes.Peak);
		ASSERT_EQ(LuaBytes.Current, 0) << "the Lua state kept memory after it was closed";
		ASSERT_EQ(FHeadlessObjectRegistry::Get().Num(), 0) << "objects outlived their editor";
		const int Every = std::max(1, Sessions / 10);
		if (Index < 2 || (Index + 1) % Every == 0)
		{
			std::printf("[ soak     ] session %d: %.3f s CPU, heap in use %lld bytes\n", Index + 1, CpuSeconds.back(), static_cast<long long>(HeapAfter.back()));
		}
	}
	const double WallSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - SoakStart).count();

	// The first session is a warm-up: it may fill caches that live as long as the program.
	const std::vector<double> Measured(CpuSeconds.begin() + 1, CpuSeconds.end());
	const double Median = GetMedian(Measured);
	const std::vector<double> Last(CpuSeconds.end() - std::min<std::ptrdiff_t>(5, static_cast<std::ptrdiff_t>(Measured.size())), CpuSeconds.end());
	const double LastMedian = GetMedian(Last);
	const int64 Growth = HeapAfter.back() - HeapAfter.front();
	std::printf("[ soak     ] %d sessions, %lld entities, %.1f s wall; CPU per session: first %.3f s, median %.3f s, median of the last %zu %.3f s\n",
		Sessions, static_cast<long long>(Entities), WallSeconds, CpuSeconds.front(), Median, Last.size(), LastMedian);
	std::printf("[ soak     ] heap in use: %lld bytes at start, %lld after the first session, %lld after the last (growth %lld); "
		"resident %lld KB; Lua peak %lld KB per session\n",
		static_cast<long long>(HeapAtStart), static_cast<long long>(HeapAfter.front()), static_cast<long long>(HeapAfter.back()),
		static_cast<long long>(Growth), static_cast<long long>(GetResidentBytes() / 1024), static_cast<long long>(LuaPeak / 1024));

	// A leak of even one object per entity would be far beyond this over twenty sessions.
	EXPECT_LT(Growth, AllowedHeapGrowth) << "memory grows from session to session";
	EXPECT_LE(LastMedian, 3.0 * Median) << "later sessions are slower";
}
