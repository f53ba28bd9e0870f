// The Lua script of an import: only dmx_library and Lua's own functions, so it runs unchanged in
// the editor through the assistant. It checks every library and name first and adds afterwards;
// each add is checked, so a script that ran to its end added exactly what it says.
#include "FixtureImport.h"

#include <cstdio>
#include <filesystem>
#include <map>

namespace
{
	const char* const ScriptHelpers = R"(local libraries = {}

-- Each library must exist and hold none of the names yet; nothing is added before all are checked.
local function open_library(path, names)
	local library = dmx_library(path)
	if not library.valid then
		error("there is no DMX Library at " .. path .. "; create it first", 0)
	end
	local taken = {}
	for _, fixture_type in ipairs(library:info().fixture_types) do
		taken[string.lower(fixture_type.name)] = true
	end
	for _, name in ipairs(names) do
		if taken[string.lower(name)] then
			error(path .. " already has a fixture type named " .. name, 0)
		end
	end
	libraries[path] = library
end

local function add_fixture_type(path, params)
	local added = libraries[path]:add("fixture_type", params)
	if added == nil or added.name ~= params.name or added.mode_count ~= #params.modes then
		error("the fixture type " .. params.name .. " could not be added to " .. path, 0)
	end
end
)";

	void AppendString(std::string& Out, const std::string& Text)
	{
		Out += '"';
		for (const char Character : Text)
		{
			const unsigned char Byte = static_cast<unsigned char>(Character);
			switch (Character)
			{
			case '"': Out += "\\\""; break;
			case '\\': Out += "\\\\"; break;
			case '\n': Out += "\\n"; break;
			case '\r': Out += "\\r"; break;
			case '\t': Out += "\\t"; break;
			default:
				if (Byte < 0x20 || Byte == 0x7F)
				{
					char Escape[8];
					std::snprintf(Escape, sizeof(Escape), "\\%03u", static_cast<unsigned>(Byte));
					Out += Escape;
				}
				else
				{
					Out += Character;
				}
			}
		}
		Out += '"';
	}

	// Doubles with every digit they need to read back as the same number.
	void AppendNumber(std::string& Out, double Value)
	{
		char Text[32];
		std::snprintf(Text, sizeof(Text), "%.17g", Value);
		Out += Text;
	}

	void AppendField(std::string& Out, const char* Key, const std::string& Value)
	{
		Out += ", ";
		Out += Key;
		Out += " = ";
		AppendString(Out, Value);
	}

	void AppendField(std::string& Out, const char* Key, int64 Value)
	{
		Out += ", ";
		Out += Key;
		Out += " = ";
		Out += std::to_string(Value);
	}

	void AppendDoubleField(std::string& Out, const char* Key, double Value)
	{
		Out += ", ";
		Out += Key;
		Out += " = ";
		AppendNumber(Out, Value);
	}

	// The keys a value shares between functions and cell attributes; those at the engine's default
	// are left out.
	void AppendValueFields(std::string& Out, const std::string& Description, int64 DefaultValue, int32 NumChannels, bool bUseLSB)
	{
		if (!Description.empty())
		{
			AppendField(Out, "description", Description);
		}
		if (DefaultValue != 0)
		{
			AppendField(Out, "default_value", DefaultValue);
		}
		if (NumChannels == 2)
		{
			AppendField(Out, "data_type", std::string("E16Bit"));
		}
		if (bUseLSB)
		{
			Out += ", use_lsb = true";
		}
	}

	void AppendFunction(std::string& Out, const FImportFunction& Function)
	{
		Out += "\t\t\t\t{attribute = ";
		AppendString(Out, Function.Attribute);
		AppendField(Out, "name", Function.Name);
		AppendValueFields(Out, Function.Description, Function.DefaultValue, Function.NumChannels, Function.bUseLSB);
		if (Function.PhysicalRange)
		{
			AppendDoubleField(Out, "physical_default_value", Function.PhysicalRange->NormalizedDefault);
			AppendDoubleField(Out, "physical_from", Function.PhysicalRange->From);
			AppendDoubleField(Out, "physical_to", Function.PhysicalRange->To);
		}
		Out += "},\n";
	}

	void AppendMatrix(std::string& Out, const FImportMatrix& Matrix)
	{
		Out += "\t\t\tmatrix = {\n\t\t\t\tenabled = true,\n";
		Out += "\t\t\t\tx_cells = " + std::to_string(Matrix.XCells) + ",\n";
		Out += "\t\t\t\ty_cells = " + std::to_string(Matrix.YCells) + ",\n";
		Out += "\t\t\t\tfirst_cell_channel = " + std::to_string(Matrix.FirstCellChannel) + ",\n";
		Out += "\t\t\t\tcell_attributes = {\n";
		for (const FImportCellAttribute& CellAttribute : Matrix.CellAttributes)
		{
			Out += "\t\t\t\t\t{attribute = ";
			AppendString(Out, CellAttribute.Attribute);
			AppendValueFields(Out, CellAttribute.Description, CellAttribute.DefaultValue, CellAttribute.NumChannels, CellAttribute.bUseLSB);
			Out += "},\n";
		}
		Out += "\t\t\t\t},\n\t\t\t},\n";
	}

	void AppendMode(std::string& Out, const FImportMode& Mode)
	{
		Out += "\t\t{\n\t\t\tname = ";
		AppendString(Out, Mode.Name);
		Out += ",\n";
		if (Mode.ChannelCount == 0)
		{
			// Without channels the engine's automatic span would still count the matrix's cell.
			Out += "\t\t\tauto_channel_span = false,\n\t\t\tchannel_span = 0,\n";
		}
		Out += "\t\t\tfunctions = {\n";
		for (const FImportFunction& Function : Mode.Functions)
		{
			AppendFunction(Out, Function);
		}
		Out += "\t\t\t},\n";
		if (Mode.Matrix)
		{
			AppendMatrix(Out, *Mode.Matrix);
		}
		Out += "\t\t},\n";
	}

	std::string GetFileName(const std::string& File)
	{
		std::string Name = std::filesystem::path(File).filename().string();
		for (char& Character : Name)
		{
			if (static_cast<unsigned char>(Character) < 0x20)
			{
				Character = '?';
			}
		}
		return Name;
	}
}

std::string WriteFixtureImportScript(const std::vector<FImportFixtureType>& FixtureTypes)
{
	std::map<std::string, std::vector<const FImportFixtureType*>> ByLibrary;
	std::vector<std::string> LibraryOrder;
	for (const FImportFixtureType& FixtureType : FixtureTypes)
	{
		std::vector<const FImportFixtureType*>& Types = ByLibrary[FixtureType.LibraryPath];
		if (Types.empty())
		{
			LibraryOrder.push_back(FixtureType.LibraryPath);
		}
		Types.push_back(&FixtureType);
	}

	std::string Out;
	Out += "-- Fixture types from fixture definitions (.qxf), written by kestdmx import: ";
	Out += std::to_string(FixtureTypes.size()) + (FixtureTypes.size() == 1 ? " fixture type in " : " fixture types in ");
	Out += std::to_string(LibraryOrder.size()) + (LibraryOrder.size() == 1 ? " DMX Library.\n" : " DMX Libraries.\n");
	Out += "-- Before it adds anything it checks that every library exists and has none of the names.\n\n";
	Out += ScriptHelpers;
	Out += "\n";
	for (const std::string& LibraryPath : LibraryOrder)
	{
		Out += "open_library(";
		AppendString(Out, LibraryPath);
		Out += ", {\n";
		for (const FImportFixtureType* FixtureType : ByLibrary[LibraryPath])
		{
			Out += "\t";
			AppendString(Out, FixtureType->Name);
			Out += ",\n";
		}
		Out += "})\n";
	}
	for (const FImportFixtureType& FixtureType : FixtureTypes)
	{
		Out += "\n-- " + GetFileName(FixtureType.SourceFile) + "\nadd_fixture_type(";
		AppendString(Out, FixtureType.LibraryPath);
		Out += ", {\n\tname = ";
		AppendString(Out, FixtureType.Name);
		Out += ",\n\tcategory = ";
		AppendString(Out, FixtureType.Category);
		Out += ",\n\tmodes = {\n";
		for (const FImportMode& Mode : FixtureType.Modes)
		{
			AppendMode(Out, Mode);
		}
		Out += "\t},\n})\n";
	}
	return Out;
}
