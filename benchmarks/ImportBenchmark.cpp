// kestdmx import over the whole collection of fixture definitions of Debian's qlcplus-data (test
// data). Each step has its physical limit beside it: reading and parsing the files alone against
// the import to a script, and the same fixture types added by hand-written Lua C API calls against
// running the import script.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <pugixml.hpp>
#include <set>
#include <stdexcept>
#include "FixtureImport.h"
#include "KestDMXRunner.h"

namespace
{
	std::string GetCorpusFolder()
	{
		const char* Folder = std::getenv("KESTDMX_FIXTURE_DEFINITIONS");
		return Folder != nullptr ? Folder : "/usr/share/qlcplus/fixtures";
	}

	const std::vector<FImportFixtureType>& GetCorpusTypes()
	{
		static const std::vector<FImportFixtureType> FixtureTypes = []()
		{
			FImportResult Result = ImportFixtureDefinitions({GetCorpusFolder()});
			if (!Result.Failures.empty() || Result.FixtureTypes.empty())
			{
				throw std::runtime_error("the fixture definitions do not import: " + GetCorpusFolder());
			}
			SettleFixtureTypeNames(Result.FixtureTypes, nullptr, Result.Notes);
			return Result.FixtureTypes;
		}();
		return FixtureTypes;
	}

	// A fresh editor with the corpus's libraries made.
	std::unique_ptr<FKestDMXSession> StartSession()
	{
		auto Session = std::make_unique<FKestDMXSession>();
		std::set<std::string> Libraries;
		for (const FImportFixtureType& FixtureType : GetCorpusTypes())
		{
			std::string Error;
			if (Libraries.insert(FixtureType.LibraryPath).second
				&& !Session->RunScript("assert(editor.create_library('" + FixtureType.LibraryPath + "'))", "benchmark", Error))
			{
				throw std::runtime_error(Error);
			}
		}
		return Session;
	}

	void BM_ParseDefinitionsOnly(benchmark::State& State)
	{
		std::vector<std::string> Files;
		for (const std::filesystem::directory_entry& Entry : std::filesystem::recursive_directory_iterator(GetCorpusFolder()))
		{
			if (Entry.is_regular_file() && Entry.path().extension() == ".qxf")
			{
				Files.push_back(Entry.path().string());
			}
		}
		for (auto _ : State)
		{
			size_t Channels = 0;
			for (const std::string& File : Files)
			{
				std::ifstream Stream(File, std::ios::binary);
				const std::string Text((std::istreambuf_iterator<char>(Stream)), std::istreambuf_iterator<char>());
				pugi::xml_document Document;
				Document.load_buffer(Text.data(), Text.size());
				for (const pugi::xml_node& Channel : Document.document_element().children("Channel"))
				{
					Channels += Channel.attribute("Name") ? 1 : 0;
				}
			}
			benchmark::DoNotOptimize(Channels);
		}
		State.counters["files"] = static_cast<double>(Files.size());
	}

	void BM_ImportToScript(benchmark::State& State)
	{
		for (auto _ : State)
		{
			FImportResult Result = ImportFixtureDefinitions({GetCorpusFolder()});
			SettleFixtureTypeNames(Result.FixtureTypes, nullptr, Result.Notes);
			const std::string Script = WriteFixtureImportScript(Result.FixtureTypes);
			benchmark::DoNotOptimize(Script.data());
		}
		State.counters["fixture_types"] = static_cast<double>(GetCorpusTypes().size());
	}

	void BM_RunImportScript(benchmark::State& State)
	{
		const std::string Script = WriteFixtureImportScript(GetCorpusTypes());
		for (auto _ : State)
		{
			State.PauseTiming();
			std::unique_ptr<FKestDMXSession> Session = StartSession();
			State.ResumeTiming();
			std::string Error;
			if (!Session->RunScript(Script, "import", Error))
			{
				State.SkipWithError(Error.c_str());
				break;
			}
			State.PauseTiming();
			Session.reset();
			State.ResumeTiming();
		}
		State.counters["fixture_types"] = static_cast<double>(GetCorpusTypes().size());
	}

	void SetStringField(lua_State* L, const char* Key, const std::string& Value)
	{
		lua_pushlstring(L, Value.data(), Value.size());
		lua_setfield(L, -2, Key);
	}

	void SetIntegerField(lua_State* L, const char* Key, lua_Integer Value)
	{
		lua_pushinteger(L, Value);
		lua_setfield(L, -2, Key);
	}

	// The keys the script writes: those at the engine's default are left out.
	void PushValueFields(lua_State* L, const std::string& Attribute, const std::string& Description, int64 DefaultValue, int32 NumChannels, bool bUseLSB)
	{
		SetStringField(L, "attribute", Attribute);
		if (!Description.empty())
		{
			SetStringField(L, "description", Description);
		}
		if (DefaultValue != 0)
		{
			SetIntegerField(L, "default_value", DefaultValue);
		}
		if (NumChannels == 2)
		{
			SetStringField(L, "data_type", "E16Bit");
		}
		if (bUseLSB)
		{
			lua_pushboolean(L, 1);
			lua_setfield(L, -2, "use_lsb");
		}
	}

	// The params of one fixture type built with the Lua C API, as the script's table constructor would.
	void PushFixtureTypeParams(lua_State* L, const FImportFixtureType& FixtureType)
	{
		lua_createtable(L, 0, 3);
		SetStringField(L, "name", FixtureType.Name);
		SetStringField(L, "category", FixtureType.Category);
		lua_createtable(L, static_cast<int>(FixtureType.Modes.size()), 0);
		for (size_t ModeIndex = 0; ModeIndex < FixtureType.Modes.size(); ++ModeIndex)
		{
			const FImportMode& Mode = FixtureType.Modes[ModeIndex];
			lua_createtable(L, 0, 3);
			SetStringField(L, "name", Mode.Name);
			lua_createtable(L, static_cast<int>(Mode.Functions.size()), 0);
			for (size_t Index = 0; Index < Mode.Functions.size(); ++Index)
			{
				const FImportFunction& Function = Mode.Functions[Index];
				lua_createtable(L, 0, 9);
				PushValueFields(L, Function.Attribute, Function.Description, Function.DefaultValue, Function.NumChannels, Function.bUseLSB);
				SetStringField(L, "name", Function.Name);
				if (Function.PhysicalRange)
				{
					lua_pushnumber(L, Function.PhysicalRange->NormalizedDefault);
					lua_setfield(L, -2, "physical_default_value");
					lua_pushnumber(L, Function.PhysicalRange->From);
					lua_setfield(L, -2, "physical_from");
					lua_pushnumber(L, Function.PhysicalRange->To);
					lua_setfield(L, -2, "physical_to");
				}
				lua_rawseti(L, -2, static_cast<lua_Integer>(Index + 1));
			}
			lua_setfield(L, -2, "functions");
			if (Mode.Matrix)
			{
				lua_createtable(L, 0, 5);
				lua_pushboolean(L, 1);
				lua_setfield(L, -2, "enabled");
				SetIntegerField(L, "x_cells", Mode.Matrix->XCells);
				SetIntegerField(L, "y_cells", Mode.Matrix->YCells);
				SetIntegerField(L, "first_cell_channel", Mode.Matrix->FirstCellChannel);
				lua_createtable(L, static_cast<int>(Mode.Matrix->CellAttributes.size()), 0);
				for (size_t Index = 0; Index < Mode.Matrix->CellAttributes.size(); ++Index)
				{
					const FImportCellAttribute& Cell = Mode.Matrix->CellAttributes[Index];
					lua_createtable(L, 0, 5);
					PushValueFields(L, Cell.Attribute, Cell.Description, Cell.DefaultValue, Cell.NumChannels, Cell.bUseLSB);
					lua_rawseti(L, -2, static_cast<lua_Integer>(Index + 1));
				}
				lua_setfield(L, -2, "cell_attributes");
				lua_setfield(L, -2, "matrix");
			}
			lua_rawseti(L, -2, static_cast<lua_Integer>(ModeIndex + 1));
		}
		lua_setfield(L, -2, "modes");
	}

	// The physical limit of the run: the module's add called straight from the C API.
	void BM_AddWithRawLuaCalls(benchmark::State& State)
	{
		for (auto _ : State)
		{
			State.PauseTiming();
			std::unique_ptr<FKestDMXSession> Session = StartSession();
			lua_State* L = Session->GetLua().GetState().lua_state();
			State.ResumeTiming();
			for (const FImportFixtureType& FixtureType : GetCorpusTypes())
			{
				lua_getglobal(L, "dmx_library");
				lua_pushlstring(L, FixtureType.LibraryPath.data(), FixtureType.LibraryPath.size());
				lua_call(L, 1, 1);
				lua_getfield(L, -1, "add");
				lua_pushvalue(L, -2);
				lua_pushliteral(L, "fixture_type");
				PushFixtureTypeParams(L, FixtureType);
				lua_call(L, 3, 1);
				if (lua_isnil(L, -1))
				{
					State.SkipWithError("add answered nil");
				}
				lua_pop(L, 2);
			}
			State.PauseTiming();
			Session.reset();
			State.ResumeTiming();
		}
		State.counters["fixture_types"] = static_cast<double>(GetCorpusTypes().size());
	}
}

BENCHMARK(BM_ParseDefinitionsOnly)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ImportToScript)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AddWithRawLuaCalls)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RunImportScript)->Unit(benchmark::kMillisecond);
