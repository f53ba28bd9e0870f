#include "ProjectJson.h"
#include "KestDMXText.h"

#include <cfloat>
#include <cmath>
#include <limits>
#include <vector>

namespace
{
	const char* const NaNText = "NaN";
	const char* const NegativeNaNText = "-NaN";
	const char* const InfinityText = "Infinity";
	const char* const NegativeInfinityText = "-Infinity";

	// The value as it stands in the file, cut short when long.
	std::string Quote(const FProjectJson& Value)
	{
		std::string Text = Value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
		if (Text.size() > 60)
		{
			Text = Text.substr(0, 57) + "...";
		}
		return Text;
	}

	[[noreturn]] void Refuse(const FProjectJsonPath& Where, const std::string& Expected, const FProjectJson& Value)
	{
		throw FProjectFileError(Where, "must be " + Expected + ", not " + Quote(Value));
	}

	// Line and column (from 1) of a byte of the text.
	std::string DescribePosition(const std::string& Text, size_t Offset)
	{
		size_t Line = 1;
		size_t LineStart = 0;
		for (size_t Index = 0; Index < Offset; ++Index)
		{
			if (Text[Index] == '\n')
			{
				++Line;
				LineStart = Index + 1;
			}
		}
		return "line " + std::to_string(Line) + ", column " + std::to_string(Offset - LineStart + 1);
	}

	// Brackets outside strings, counted before the parser sees the text, so that no part of the
	// program ever holds a value nested deeper than the formats allow.
	void CheckNesting(const std::string& Text)
	{
		int32 Depth = 0;
		bool bInString = false;
		bool bEscaped = false;
		for (size_t Index = 0; Index < Text.size(); ++Index)
		{
			const char C = Text[Index];
			if (bInString)
			{
				if (bEscaped)
				{
					bEscaped = false;
				}
				else if (C == '\\')
				{
					bEscaped = true;
				}
				else if (C == '"')
				{
					bInString = false;
				}
			}
			else if (C == '"')
			{
				bInString = true;
			}
			else if (C == '[' || C == '{')
			{
				if (++Depth > MaxProjectJsonDepth)
				{
					throw FProjectFileError("lists and objects are nested deeper than " + std::to_string(MaxProjectJsonDepth)
						+ " levels at " + DescribePosition(Text, Index));
				}
			}
			else if ((C == ']' || C == '}') && Depth > 0)
			{
				--Depth;
			}
		}
	}
}

std::string FProjectJsonPath::ToString() const
{
	std::vector<const FProjectJsonPath*> Chain;
	for (const FProjectJsonPath* Step = this; Step != nullptr && Step->Parent != nullptr; Step = Step->Parent)
	{
		Chain.push_back(Step);
	}
	std::string Text;
	for (auto It = Chain.rbegin(); It != Chain.rend(); ++It)
	{
		if ((*It)->Key != nullptr)
		{
			Text += (Text.empty() ? "" : ".") + std::string((*It)->Key);
		}
		else
		{
			Text += "[" + std::to_string((*It)->Index) + "]";
		}
	}
	return Text;
}

std::string DescribeAt(const FProjectJsonPath& Where, const std::string& Problem)
{
	const std::string Place = Where.ToString();
	return Place.empty() ? Problem : Place + ": " + Problem;
}

FProjectFileError::FProjectFileError(const FProjectJsonPath& Where, const std::string& Problem)
	: std::runtime_error(DescribeAt(Where, Problem))
{
}

FProjectJson ParseProjectJson(const std::string& Text)
{
	CheckNesting(Text);
	try
	{
		return FProjectJson::parse(Text);
	}
	catch (const nlohmann::json::parse_error& Error)
	{
		// "[json.exception.parse_error.101] parse error at line 1, column 2: ..." without the tag.
		std::string Message = Error.what();
		const size_t TagEnd = Message.find("] ");
		throw FProjectFileError(TagEnd == std::string::npos ? Message : Message.substr(TagEnd + 2));
	}
}

std::string DumpProjectJson(const FProjectJson& Json)
{
	return Json.dump(1, '\t') + "\n";
}

void CheckProjectFileFormat(const FProjectJson& File, const char* Format, int64 Version)
{
	const FProjectJsonPath Root;
	const auto FormatIt = File.is_object() ? File.find("format") : File.end();
	if (!File.is_object() || FormatIt == File.end() || *FormatIt != Format)
	{
		throw FProjectFileError(std::string("not a file of format \"") + Format + "\"");
	}
	const FProjectJson& VersionValue = ReadField(File, Root, "version");
	if (!VersionValue.is_number_integer() || VersionValue.get<int64>() != Version || (VersionValue.is_number_unsigned() && VersionValue.get<uint64>() > uint64(Version)))
	{
		throw FProjectFileError(Root.At("version"), "this kestdmx reads version " + std::to_string(Version) + " only, not " + Quote(VersionValue));
	}
}

const FProjectJson& ReadField(const FProjectJson& Object, const FProjectJsonPath& Where, const char* Key)
{
	const auto It = Object.find(Key);
	if (It == Object.end())
	{
		throw FProjectFileError(Where, std::string("\"") + Key + "\" is missing");
	}
	return *It;
}

const FProjectJson& ReadObject(const FProjectJson& Object, const FProjectJsonPath& Where, const char* Key)
{
	return CheckObject(ReadField(Object, Where, Key), Where.At(Key));
}

const FProjectJson& CheckObject(const FProjectJson& Value, const FProjectJsonPath& Where)
{
	if (!Value.is_object())
	{
		Refuse(Where, "an object", Value);
	}
	return Value;
}

const FProjectJson& ReadList(const FProjectJson& Object, const FProjectJsonPath& Where, const char* Key)
{
	const FProjectJson& Value = ReadField(Object, Where, Key);
	if (!Value.is_array())
	{
		Refuse(Where.At(Key), "a list", Value);
	}
	return Value;
}

bool ReadBool(const FProjectJson& Object, const FProjectJsonPath& Where, const char* Key)
{
	const FProjectJson& Value = ReadField(Object, Where, Key);
	if (!Value.is_boolean())
	{
		Refuse(Where.At(Key), "true or false", Value);
	}
	return Value.get<bool>();
}

int64 ReadInteger(const FProjectJson& Object, const FProjectJsonPath& Where, const char* Key, int64 Min, int64 Max)
{
	const FProjectJson& Value = ReadField(Object, Where, Key);
	// Unsigned values beyond the signed range are out of every range a field has.
	const bool bInRange = Value.is_number_integer()
		&& !(Value.is_number_unsigned() && Value.get<uint64>() > uint64(std::numeric_limits<int64>::max()))
		&& Value.get<int64>() >= Min && Value.get<int64>() <= Max;
	if (!bInRange)
	{
		Refuse(Where.At(Key), "a whole number from " + std::to_string(Min) + " to " + std::to_string(Max), Value);
	}
	return Value.get<int64>();
}

double ReadDouble(const FProjectJson& Object, const FProjectJsonPath& Where, const char* Key)
{
	return CheckDouble(ReadField(Object, Where, Key), Where.At(Key));
}

double CheckDouble(const FProjectJson& Value, const FProjectJsonPath& Where)
{
	if (Value.is_number())
	{
		return Value.get<double>();
	}
	if (Value.is_string())
	{
		const std::string& Text = Value.get_ref<const std::string&>();
		if (Text == NaNText)
		{
			return std::numeric_limits<double>::quiet_NaN();
		}
		if (Text == NegativeNaNText)
		{
			return -std::numeric_limits<double>::quiet_NaN();
		}
		if (Text == InfinityText)
		{
			return std::numeric_limits<double>::infinity();
		}
		if (Text == NegativeInfinityText)
		{
			return -std::numeric_limits<double>::infinity();
		}
	}
	Refuse(Where, "a number, \"NaN\", \"-NaN\", \"Infinity\" or \"-Infinity\"", Value);
}

float CheckFloat(const FProjectJson& Value, const FProjectJsonPath& Where)
{
	const double Number = CheckDouble(Value, Where);
	if (std::isfinite(Number) && std::fabs(Number) > double(FLT_MAX))
	{
		Refuse(Where, "a number within the range of single precision (" + std::to_string(FLT_MAX) + ")", Value);
	}
	return static_cast<float>(Number);
}

FString ReadString(const FProjectJson& Object, const FProjectJsonPath& Where, const char* Key)
{
	const FProjectJson& Value = ReadField(Object, Where, Key);
	if (!Value.is_string())
	{
		Refuse(Where.At(Key), "a text", Value);
	}
	const std::string& Text = Value.get_ref<const std::string&>();
	if (Text.find('\0') != std::string::npos)
	{
		throw FProjectFileError(Where.At(Key), "must not hold a NUL character (\\u0000)");
	}
	return ToEngine(Text);
}

FName ReadName(const FProjectJson& Object, const FProjectJsonPath& Where, const char* Key)
{
	return CheckName(ReadField(Object, Where, Key), Where.At(Key));
}

FName CheckName(const FProjectJson& Value, const FProjectJsonPath& Where)
{
	if (Value.is_null())
	{
		return FName();
	}
	if (!Value.is_string())
	{
		Refuse(Where, "a text or null", Value);
	}
	const std::string& Text = Value.get_ref<const std::string&>();
	if (Text.find('\0') != std::string::npos)
	{
		throw FProjectFileError(Where, "must not hold a NUL character (\\u0000)");
	}
	return FName(ToEngine(Text));
}

FGuid ReadGuid(const FProjectJson& Object, const FProjectJsonPath& Where, const char* Key)
{
	const FProjectJson& Value = ReadField(Object, Where, Key);
	FGuid Guid;
	if (!Value.is_string() || !FGuid::Parse(ToEngine(Value.get_ref<const std::string&>()), Guid))
	{
		Refuse(Where.At(Key), "a GUID (XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX)", Value);
	}
	return Guid;
}

uint8 FindEnumName(const char* const* Names, size_t Count, const FProjectJson& Object, const FProjectJsonPath& Where, const char* Key)
{
	const FProjectJson& Value = ReadField(Object, Where, Key);
	if (Value.is_string())
	{
		for (size_t Index = 0; Index < Count; ++Index)
		{
			if (Value.get_ref<const std::string&>() == Names[Index])
			{
				return static_cast<uint8>(Index);
			}
		}
	}
	std::string Expected = "one of";
	for (size_t Index = 0; Index < Count; ++Index)
	{
		Expected += std::string(Index == 0 ? " \"" : ", \"") + Names[Index] + "\"";
	}
	Refuse(Where.At(Key), Expected, Value);
}

FProjectJson WriteName(const FName& Name)
{
	return Name.IsNone() ? FProjectJson(nullptr) : FProjectJson(ToUTF8(Name.ToString()));
}

FProjectJson WriteGuid(const FGuid& Guid)
{
	return ToUTF8(Guid.ToString(EGuidFormats::DigitsWithHyphens));
}

FProjectJson WriteDouble(double Value)
{
	if (std::isnan(Value))
	{
		return std::signbit(Value) ? NegativeNaNText : NaNText;
	}
	if (std::isinf(Value))
	{
		return Value < 0 ? NegativeInfinityText : InfinityText;
	}
	return Value;
}
