#include "KestDMXStubs.h"
#include "KestDMXSchema.h"

#include <algorithm>
#include <sstream>

namespace
{
	// Annotations are one line each: a doc text never breaks one.
	std::string OneLine(const std::string& Text)
	{
		std::string Line = Text;
		std::replace(Line.begin(), Line.end(), '\n', ' ');
		return Line;
	}

	std::string DescribeDefault(const FKestField& Field)
	{
		switch (Field.Default)
		{
		case EKestDefault::Fixed: return " (default " + Field.Literal + ")";
		case EKestDefault::Current: return " (default: unchanged)";
		default: return std::string();
		}
	}

	void WriteAlias(std::ostringstream& Out, const FKestTextSet& TextSet)
	{
		Out << "---" << OneLine(TextSet.Doc) << "\n---@alias " << TextSet.Alias << ' ';
		for (size_t Index = 0; Index < TextSet.Accepted.size(); ++Index)
		{
			Out << (Index == 0 ? "" : "|") << '"' << TextSet.Accepted[Index] << '"';
		}
		Out << "\n\n";
	}

	void WriteClass(std::ostringstream& Out, const FKestClass& Class)
	{
		if (!Class.Doc.empty())
		{
			Out << "---" << OneLine(Class.Doc) << '\n';
		}
		Out << "---@class " << Class.Name << '\n';
		for (const FKestField& Field : Class.Fields)
		{
			const bool bOptional = Class.bParams || Field.bOptional;
			Out << "---@field " << Field.Name << (bOptional ? "? " : " ") << Field.LuaType << ' ' << OneLine(Field.Doc);
			if (Class.bParams)
			{
				Out << DescribeDefault(Field);
			}
			Out << '\n';
		}
		Out << '\n';
	}

	std::string FormatParameterList(const FKestFunction& Function)
	{
		std::string List;
		for (const FKestArgument& Argument : Function.Arguments)
		{
			List += (List.empty() ? "" : ", ") + Argument.Name;
		}
		return List;
	}

	std::string GetArgumentType(const FKestArgument& Argument, const FKestKindParams* Kind)
	{
		if (Kind != nullptr && Argument.Name == "kind")
		{
			return "\"" + Kind->Kind + "\"";
		}
		if (Kind != nullptr && Argument.Name == "params")
		{
			return Kind->ParamsClass;
		}
		return Argument.LuaType;
	}

	std::string GetResultType(const FKestFunction& Function, const FKestKindParams* Kind)
	{
		if (Kind == nullptr || Kind->ResultType == "boolean")
		{
			return Kind != nullptr ? Kind->ResultType : Function.ResultType;
		}
		return Kind->ResultType + "|nil";
	}

	// A function, or a method of the handle class Owner; the first kind (if any) is the declared
	// signature and every other kind an overload.
	void WriteFunction(std::ostringstream& Out, const FKestFunction& Function, const std::string& Owner, bool bDotted)
	{
		const FKestKindParams* FirstKind = Function.Kinds.empty() ? nullptr : &Function.Kinds.front();
		Out << "---" << OneLine(Function.Doc) << '\n';
		for (const FKestArgument& Argument : Function.Arguments)
		{
			Out << "---@param " << Argument.Name << (Argument.bOptional ? "? " : " ") << GetArgumentType(Argument, FirstKind) << ' ' << OneLine(Argument.Doc) << '\n';
		}
		const std::string ResultType = GetResultType(Function, FirstKind);
		if (ResultType != "nil")
		{
			Out << "---@return " << ResultType << (Function.ResultDoc.empty() ? "" : " # " + OneLine(Function.ResultDoc)) << '\n';
		}
		for (size_t KindIndex = 1; KindIndex < Function.Kinds.size(); ++KindIndex)
		{
			const FKestKindParams& Kind = Function.Kinds[KindIndex];
			Out << "---@overload fun(self: " << Owner;
			for (const FKestArgument& Argument : Function.Arguments)
			{
				Out << ", " << Argument.Name << ": " << GetArgumentType(Argument, &Kind);
			}
			Out << "): " << GetResultType(Function, &Kind) << '\n';
		}
		Out << "function " << (Owner.empty() ? "" : Owner + (bDotted ? "." : ":")) << Function.Name << '(' << FormatParameterList(Function) << ") end\n\n";
	}
}

std::string FormatLuaLSDefinitions()
{
	const FKestSchema& Schema = GetKestDMXSchema();
	std::ostringstream Out;
	Out << "---@meta kestdmx\n";
	Out << "-- The Lua API of the DMX Engine extension (dmx_library, dmx_component, dmx_subsystem) and the\n";
	Out << "-- headless editor's editor global, for Lua language servers. Written by `kestdmx stubs`; do not edit.\n\n";
	for (const FKestTextSet& TextSet : Schema.TextSets)
	{
		WriteAlias(Out, TextSet);
	}
	for (const FKestClass& Class : Schema.Classes)
	{
		WriteClass(Out, Class);
	}
	for (const FKestGlobal& Global : Schema.Globals)
	{
		Out << "---" << OneLine(Global.HandleDoc) << '\n';
		Out << "---@class " << Global.HandleClass << '\n';
		for (const FKestField& Field : Global.HandleFields)
		{
			Out << "---@field " << Field.Name << ' ' << Field.LuaType << ' ' << OneLine(Field.Doc) << '\n';
		}
		if (Global.bTableOfFunctions)
		{
			Out << Global.Name << " = {}\n\n";
			for (const FKestFunction& Function : Global.Functions)
			{
				WriteFunction(Out, Function, Global.Name, true);
			}
			continue;
		}
		Out << "local " << Global.HandleClass << " = {}\n\n";
		for (const FKestFunction& Function : Global.Functions)
		{
			WriteFunction(Out, Function, Global.HandleClass, false);
		}
		WriteFunction(Out, Global.Opener, std::string(), false);
	}
	return Out.str();
}

std::string FormatLuacheckConfig()
{
	const FKestSchema& Schema = GetKestDMXSchema();
	std::ostringstream Out;
	Out << "-- luacheck configuration for scripts of the DMX Engine extension and the headless editor.\n";
	Out << "-- Written by `kestdmx stubs --luacheck`; do not edit.\n";
	Out << "std = \"lua54\"\n";
	Out << "read_globals = {\n";
	for (const FKestGlobal& Global : Schema.Globals)
	{
		if (!Global.bTableOfFunctions)
		{
			Out << "\t\"" << Global.Name << "\",\n";
			continue;
		}
		Out << "\t" << Global.Name << " = {\n\t\tfields = {\n";
		for (const FKestFunction& Function : Global.Functions)
		{
			Out << "\t\t\t\"" << Function.Name << "\",\n";
		}
		Out << "\t\t},\n\t},\n";
	}
	Out << "}\n";
	return Out.str();
}
