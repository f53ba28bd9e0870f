// Reading a call's arguments as the script gave them against the schema, with raw reads only: no
// metamethod of the script runs and a userdata is never walked, so the check cannot change what the
// module then reads.
#include "KestDMXCheckCall.h"

#include <cmath>
#include <cstdio>
#include <climits>

#include "host/VorlithLua.h"

namespace
{
	// Findings about the unknown keys of one table; the rest is summed up in one more.
	const int MaxUnknownKeyFindings = 10;

	long long TruncateToInt32(double Value)
	{
		if (std::isnan(Value) || Value <= -2147483649.0 || Value >= 2147483648.0)
		{
			return INT_MIN;
		}
		return static_cast<long long>(Value);
	}

	nlohmann::json ParseLiteral(const std::string& Literal)
	{
		if (Literal.empty())
		{
			return nullptr;
		}
		if (Literal.front() == '"')
		{
			return Literal.substr(1, Literal.size() - 2);
		}
		if (Literal == "true" || Literal == "false")
		{
			return Literal == "true";
		}
		return std::stoll(Literal);
	}

	bool MatchesType(EKestLuaType Type, int LuaType)
	{
		switch (Type)
		{
		case EKestLuaType::Boolean: return LuaType == LUA_TBOOLEAN;
		case EKestLuaType::Number:
		case EKestLuaType::Integer: return LuaType == LUA_TNUMBER;
		case EKestLuaType::String: return LuaType == LUA_TSTRING;
		case EKestLuaType::Table:
		case EKestLuaType::List: return LuaType == LUA_TTABLE || LuaType == LUA_TUSERDATA;
		case EKestLuaType::Function: return LuaType == LUA_TFUNCTION;
		default: return false;
		}
	}

	const char* NameType(EKestLuaType Type)
	{
		switch (Type)
		{
		case EKestLuaType::Boolean: return "a boolean";
		case EKestLuaType::Number: return "a number";
		case EKestLuaType::Integer: return "a number";
		case EKestLuaType::String: return "a string";
		case EKestLuaType::Table: return "a table";
		case EKestLuaType::List: return "a list (a table)";
		default: return "a value";
		}
	}

	nlohmann::json ReadScalar(lua_State* L, int Index)
	{
		switch (lua_type(L, Index))
		{
		case LUA_TBOOLEAN: return lua_toboolean(L, Index) != 0;
		case LUA_TNUMBER:
			if (lua_isinteger(L, Index))
			{
				return static_cast<long long>(lua_tointeger(L, Index));
			}
			return static_cast<double>(lua_tonumber(L, Index));
		case LUA_TSTRING:
		{
			size_t Length = 0;
			const char* Text = lua_tolstring(L, Index, &Length);
			return MakeJsonText(std::string(Text, Length));
		}
		default: return nullptr;
		}
	}

	// What the module does with a key that is absent or of another type.
	std::string DescribeFallback(const FKestField& Field)
	{
		switch (Field.Default)
		{
		case EKestDefault::Fixed: return "so " + Field.Literal + " was used";
		case EKestDefault::Current: return "so the current value was kept";
		default: return "so it was not applied";
		}
	}

	nlohmann::json GetFallbackValue(const FKestField& Field)
	{
		return Field.Default == EKestDefault::Fixed ? ParseLiteral(Field.Literal) : nlohmann::json(nullptr);
	}

	std::string FormatEntryPath(lua_State* L, const std::string& Path, int KeyIndex)
	{
		if (lua_type(L, KeyIndex) == LUA_TNUMBER && lua_isinteger(L, KeyIndex))
		{
			return Path + "[" + std::to_string(lua_tointeger(L, KeyIndex)) + "]";
		}
		if (lua_type(L, KeyIndex) == LUA_TSTRING)
		{
			size_t Length = 0;
			const char* Text = lua_tolstring(L, KeyIndex, &Length);
			return Path + "[" + QuoteText(std::string(Text, Length)) + "]";
		}
		if (lua_type(L, KeyIndex) == LUA_TNUMBER)
		{
			return Path + "[" + FormatCheckNumber(lua_tonumber(L, KeyIndex)) + "]";
		}
		return Path + "[" + std::string(luaL_typename(L, KeyIndex)) + "]";
	}

	std::string JoinPath(const std::string& Path, const std::string& Key)
	{
		return Path.empty() ? Key : Path + "." + Key;
	}

	void ReportUnknownKeys(lua_State* L, int TableIndex, const FKestClass& Class, const std::string& Path, FKestCheckCall& Call)
	{
		int Reported = 0;
		int NotReported = 0;
		lua_pushnil(L);
		while (lua_next(L, TableIndex) != 0)
		{
			const int KeyIndex = lua_gettop(L) - 1;
			std::string KeyPath;
			std::string Message;
			if (lua_type(L, KeyIndex) == LUA_TSTRING)
			{
				size_t Length = 0;
				const char* Text = lua_tolstring(L, KeyIndex, &Length);
				const std::string Key(Text, Length);
				if (Class.FindField(Key) == nullptr)
				{
					KeyPath = JoinPath(Path, Key);
					const std::string Suggestion = SuggestParamsKey(Class, Key);
					Message = KeyPath + ": this key is never read";
					if (!Suggestion.empty())
					{
						Message += "; did you mean " + Suggestion + "?";
						Call.SuggestedKeys.push_back(Suggestion);
					}
					else
					{
						std::string Known;
						for (const FKestField& Field : Class.Fields)
						{
							Known += (Known.empty() ? "" : ", ") + Field.Name;
						}
						Message += " (keys read here: " + Known + ")";
					}
				}
			}
			else
			{
				KeyPath = FormatEntryPath(L, Path, KeyIndex);
				Message = KeyPath + ": " + DescribeLuaValue(L, KeyIndex + 1) + " under a key that is not a name is never read (this table takes named keys)";
			}
			if (!Message.empty())
			{
				if (Reported < MaxUnknownKeyFindings)
				{
					Call.Report("unknown-key", KeyPath, Message, ReadScalar(L, KeyIndex + 1));
					++Reported;
				}
				else
				{
					++NotReported;
				}
			}
			lua_pop(L, 1);
		}
		if (NotReported > 0)
		{
			Call.Report("unknown-key", Path, (Path.empty() ? std::string("params") : Path) + ": " + std::to_string(NotReported) + " more keys are never read");
		}
	}

	void ReadNumberField(lua_State* L, int ValueIndex, const FKestField& Field, FKestAsked& Asked, FKestCheckCall& Call)
	{
		const double Number = lua_tonumber(L, ValueIndex);
		if (Field.Type != EKestLuaType::Integer)
		{
			Asked.Used = Asked.Given;
			return;
		}
		const long long Truncated = TruncateToInt32(Number);
		const long long Used = std::max(Field.Min, std::min(Truncated, Field.Max));
		Asked.Used = Used;
		if (static_cast<double>(Used) == Number)
		{
			return;
		}
		const std::string Given = FormatCheckNumber(Number);
		std::string Why;
		if (Truncated == INT_MIN && static_cast<double>(INT_MIN) != std::trunc(Number))
		{
			Why = Given + " does not fit in a 32-bit integer";
		}
		else if (Truncated != Used)
		{
			Why = Given + " is outside " + std::to_string(Field.Min) + ".." + std::to_string(Field.Max);
		}
		else
		{
			Why = Given + " is not a whole number";
		}
		Call.Report("clamped", Asked.Path, Asked.Path + ": " + Why + ", so " + std::to_string(Used) + " was used", Asked.Given, Asked.Used);
	}

	void ReadTextField(lua_State* L, int ValueIndex, const FKestField& Field, FKestAsked& Asked, FKestCheckCall& Call)
	{
		const FKestTextSet* TextSet = Field.TextSet.empty() ? nullptr : GetKestDMXSchema().FindTextSet(Field.TextSet);
		size_t Length = 0;
		const char* Text = lua_tolstring(L, ValueIndex, &Length);
		const std::string Given(Text, Length);
		if (TextSet == nullptr)
		{
			Asked.Used = Asked.Given;
			return;
		}
		if (TextSet->Accepts(Given))
		{
			Asked.Used = TextSet->GetValue(Given);
			return;
		}
		Asked.Used = GetFallbackValue(Field);
		std::string Accepted;
		for (const std::string& Candidate : TextSet->Accepted)
		{
			Accepted += (Accepted.empty() ? "" : ", ") + Candidate;
		}
		std::string Message = Asked.Path + ": " + QuoteText(Given);
		if (TextSet->Rejects(Given))
		{
			Message += " can never be set from a script, ";
			Accepted = "accepted: " + Accepted;
		}
		else
		{
			Message += " is not one of the accepted texts, ";
			const std::string Suggestion = SuggestClosest(Given, TextSet->Accepted);
			Accepted = (Suggestion.empty() ? std::string("accepted: ") : "did you mean " + Suggestion + "? Accepted: ") + Accepted;
		}
		Message += DescribeFallback(Field) + "; " + Accepted + " (any letter case)";
		Call.Report("unknown-text", Asked.Path, Message, Asked.Given, Asked.Used);
	}

	void ReadListField(lua_State* L, int ValueIndex, const FKestField& Field, FKestAsked& Asked, FKestCheckCall& Call)
	{
		if (lua_type(L, ValueIndex) != LUA_TTABLE)
		{
			Asked.bOpaque = true;
			Call.Report("wrong-type", Asked.Path, Asked.Path + ": a userdata is taken as an empty list (its entries are never walked)");
			return;
		}
		const FKestClass* EntryClass = Field.Class.empty() ? nullptr : GetKestDMXSchema().FindClass(Field.Class);
		luaL_checkstack(L, 4, "kestdmx check");
		lua_pushnil(L);
		while (lua_next(L, ValueIndex) != 0)
		{
			const int KeyIndex = lua_gettop(L) - 1;
			const int EntryIndex = lua_gettop(L);
			const std::string EntryPath = FormatEntryPath(L, Asked.Path, KeyIndex);
			const int EntryType = lua_type(L, EntryIndex);
			const bool bCounts = Field.EntryType == EKestLuaType::Table ? EntryType == LUA_TTABLE : EntryType == LUA_TSTRING;
			if (!bCounts)
			{
				Call.Report("wrong-type", EntryPath, EntryPath + ": " + DescribeLuaValue(L, EntryIndex) + " is not " + NameType(Field.EntryType) + ", so it was skipped",
					ReadScalar(L, EntryIndex));
			}
			else if (EntryClass != nullptr)
			{
				Asked.Entries.push_back(ReadAskedParams(L, EntryIndex, *EntryClass, EntryPath, Call));
			}
			else
			{
				FKestAsked Entry;
				Entry.Path = EntryPath;
				Entry.LuaType = EntryType;
				Entry.bCounts = true;
				Entry.Given = ReadScalar(L, EntryIndex);
				Entry.Used = Entry.Given;
				Asked.Entries.push_back(std::move(Entry));
			}
			lua_pop(L, 1);
		}
	}

	FKestAsked ReadField(lua_State* L, int ValueIndex, const FKestField& Field, const std::string& Path, FKestCheckCall& Call)
	{
		FKestAsked Asked;
		Asked.Path = Path;
		Asked.LuaType = lua_type(L, ValueIndex);
		Asked.Given = ReadScalar(L, ValueIndex);
		if (Asked.LuaType == LUA_TNIL)
		{
			Asked.Used = GetFallbackValue(Field);
			return Asked;
		}
		if (!MatchesType(Field.Type, Asked.LuaType))
		{
			Asked.Used = GetFallbackValue(Field);
			Call.Report("wrong-type", Path, Path + ": " + DescribeLuaValue(L, ValueIndex) + " is not " + NameType(Field.Type) + ", " + DescribeFallback(Field),
				Asked.Given, Asked.Used);
			return Asked;
		}
		Asked.bCounts = true;
		switch (Field.Type)
		{
		case EKestLuaType::Number:
		case EKestLuaType::Integer: ReadNumberField(L, ValueIndex, Field, Asked, Call); break;
		case EKestLuaType::String: ReadTextField(L, ValueIndex, Field, Asked, Call); break;
		case EKestLuaType::Boolean: Asked.Used = Asked.Given; break;
		case EKestLuaType::List: ReadListField(L, ValueIndex, Field, Asked, Call); break;
		case EKestLuaType::Table:
			if (const FKestClass* Nested = GetKestDMXSchema().FindClass(Field.Class))
			{
				FKestAsked Table = ReadAskedParams(L, ValueIndex, *Nested, Path, Call);
				Table.LuaType = Asked.LuaType;
				Table.bCounts = true;
				return Table;
			}
			break;
		default: break;
		}
		return Asked;
	}

	// A list of integers as the byte tables of conversions are read: every value in table order,
	// non-numbers skipped, integers clamped. A float makes the call raise, so it is left alone.
	void ReadIntegerList(lua_State* L, int Index, const FKestArgument& Argument, FKestAsked& Asked, FKestCheckCall& Call)
	{
		if (lua_type(L, Index) != LUA_TTABLE)
		{
			Asked.bOpaque = true;
			Call.Report("ignored", Asked.Path, Asked.Path + ": a userdata counts as an empty list (its entries are never walked)");
			return;
		}
		luaL_checkstack(L, 4, "kestdmx check");
		const int ListIndex = lua_absindex(L, Index);
		lua_pushnil(L);
		while (lua_next(L, ListIndex) != 0)
		{
			const int KeyIndex = lua_gettop(L) - 1;
			const int EntryIndex = lua_gettop(L);
			const std::string EntryPath = FormatEntryPath(L, Asked.Path, KeyIndex);
			if (lua_type(L, EntryIndex) != LUA_TNUMBER)
			{
				Call.Report("wrong-type", EntryPath, EntryPath + ": " + DescribeLuaValue(L, EntryIndex) + " is not a number, so it was skipped", ReadScalar(L, EntryIndex));
			}
			else if (lua_isinteger(L, EntryIndex))
			{
				const long long Given = static_cast<int32_t>(static_cast<uint32_t>(lua_tointeger(L, EntryIndex)));
				const long long Used = std::max(Argument.Min, std::min(Given, Argument.Max));
				FKestAsked Entry;
				Entry.Path = EntryPath;
				Entry.LuaType = LUA_TNUMBER;
				Entry.bCounts = true;
				Entry.Given = static_cast<long long>(lua_tointeger(L, EntryIndex));
				Entry.Used = Used;
				if (Used != lua_tointeger(L, EntryIndex))
				{
					Call.Report("clamped", EntryPath, EntryPath + ": " + FormatLuaNumber(L, EntryIndex) + " is outside " + std::to_string(Argument.Min) + ".."
						+ std::to_string(Argument.Max) + ", so " + std::to_string(Used) + " was used", Entry.Given, Entry.Used);
				}
				Asked.Entries.push_back(std::move(Entry));
			}
			lua_pop(L, 1);
		}
	}

	// Pushes Table[Key] as a plain read finds it without running code: the raw value, or for an absent
	// key the value found in the __index tables the read goes on to. False (nil pushed) when an
	// __index that is not a table would decide, so the value is not known here.
	bool PushPlainRead(lua_State* L, int TableIndex, const std::string& Key)
	{
		const int MaxIndexTables = 16;
		lua_pushvalue(L, TableIndex);
		for (int Depth = 0; Depth < MaxIndexTables; ++Depth)
		{
			lua_pushlstring(L, Key.data(), Key.size());
			lua_rawget(L, -2);
			if (!lua_isnil(L, -1) || !lua_getmetatable(L, -2))
			{
				lua_remove(L, -2);
				return true;
			}
			lua_pushliteral(L, "__index");
			lua_rawget(L, -2);
			const int IndexType = lua_type(L, -1);
			if (IndexType == LUA_TNIL)
			{
				lua_pop(L, 2);
				lua_remove(L, -2);
				return true;
			}
			if (IndexType != LUA_TTABLE)
			{
				lua_pop(L, 4);
				lua_pushnil(L);
				return false;
			}
			lua_replace(L, -4);
			lua_pop(L, 2);
		}
		lua_pop(L, 1);
		lua_pushnil(L);
		return false;
	}
}

const FKestAsked& FKestAsked::operator[](const std::string& Key) const
{
	static const FKestAsked Absent;
	const auto Found = Keys.find(Key);
	return Found != Keys.end() ? Found->second : Absent;
}

std::optional<std::string> FKestAsked::GetString() const
{
	if (bCounts && Used.is_string())
	{
		return Used.get<std::string>();
	}
	return std::nullopt;
}

std::optional<double> FKestAsked::GetNumber() const
{
	if (bCounts && Used.is_number())
	{
		return Used.get<double>();
	}
	return std::nullopt;
}

FKestAsked ReadAskedParams(lua_State* L, int Index, const FKestClass& Class, const std::string& Path, FKestCheckCall& Call)
{
	FKestAsked Asked;
	Asked.Path = Path;
	Asked.LuaType = lua_type(L, Index);
	Asked.bCounts = Asked.LuaType == LUA_TTABLE || Asked.LuaType == LUA_TUSERDATA;
	if (Asked.LuaType != LUA_TTABLE)
	{
		Asked.bOpaque = Asked.LuaType == LUA_TUSERDATA;
		return Asked;
	}
	luaL_checkstack(L, 8, "kestdmx check");
	const int TableIndex = lua_absindex(L, Index);
	for (const FKestField& Field : Class.Fields)
	{
		const int Top = lua_gettop(L);
		const bool bKnown = PushPlainRead(L, TableIndex, Field.Name);
		FKestAsked Value = ReadField(L, lua_gettop(L), Field, JoinPath(Path, Field.Name), Call);
		Value.bUncertain = !bKnown;
		lua_settop(L, Top);
		Asked.Keys.emplace(Field.Name, std::move(Value));
	}
	ReportUnknownKeys(L, TableIndex, Class, Path, Call);

	// A key read only together with another one.
	for (const FKestField& Field : Class.Fields)
	{
		const FKestAsked& Value = Asked[Field.Name];
		if (!Field.Requires.empty() && Value.bCounts && Asked[Field.Requires].LuaType != LUA_TSTRING && !Asked[Field.Requires].bUncertain)
		{
			Call.Report("ignored", Value.Path, Value.Path + ": read only together with " + JoinPath(Path, Field.Requires) + " (a string), so it was not applied",
				Value.Given);
		}
	}
	return Asked;
}

FKestAsked ReadAskedArgument(lua_State* L, int Index, const FKestArgument& Argument, FKestCheckCall& Call)
{
	FKestField Field;
	Field.Name = Argument.Name;
	Field.Type = Argument.Type == EKestLuaType::Integer ? EKestLuaType::Number : Argument.Type;
	Field.TextSet = Argument.TextSet;
	Field.Default = EKestDefault::Fixed;
	if (Argument.TextSet == "DMXDataType")
	{
		Field.Literal = "\"E8Bit\"";
	}
	else
	{
		Field.Default = EKestDefault::None;
	}
	FKestAsked Asked;
	Asked.Path = Argument.Name;
	Asked.LuaType = lua_type(L, Index);
	Asked.Given = ReadScalar(L, Index);
	Asked.bCounts = MatchesType(Argument.Type, Asked.LuaType);
	// The kind's texts are the method's business: an unknown kind fails the call as a whole.
	if (Asked.bCounts && Asked.LuaType == LUA_TSTRING && Argument.TextSet == "DMXDataType")
	{
		ReadTextField(L, Index, Field, Asked, Call);
	}
	else if (Asked.bCounts && Argument.Type == EKestLuaType::List)
	{
		ReadIntegerList(L, Index, Argument, Asked, Call);
	}
	else
	{
		Asked.Used = Asked.Given;
	}
	return Asked;
}
