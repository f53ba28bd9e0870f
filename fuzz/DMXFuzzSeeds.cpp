#include "DMXFuzzSeeds.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "DMXFuzzFormat.h"

using namespace KestFuzz;

namespace
{
	using FBytes = std::vector<uint8_t>;

	// Slots of the initial handles (InitialHandles).
	enum ESlot : int
	{
		SlotLibrary = 0,
		SlotLibraryObjectPath = 1,
		SlotOtherLibrary = 2,
		SlotMissingLibrary = 3,
		SlotStageLeft = 4,
		SlotTrussRig = 5,
		SlotBare = 6,
		SlotMissingActor = 7,
		SlotSubsystem = 8,
		// The first handle a program's own global call answers.
		SlotFirstOpened = 9,
	};
	enum ELibraryMethod : int { LibInfo, LibAdd, LibConfigure, LibRemove };
	enum EComponentMethod : int { CompInfo, CompAdd, CompConfigure };
	enum ESubsystemMethod : int { IntToBytes, BytesToInt, NormalizedToBytes, BytesToNormalized };
	enum EGlobal : int { GlobalLibrary, GlobalComponent, GlobalSubsystem };

	uint8_t TagByte(EValueTag Tag) { return static_cast<uint8_t>(Tag); }

	FBytes Cat(std::initializer_list<FBytes> Parts)
	{
		FBytes Out;
		for (const FBytes& Part : Parts)
		{
			Out.insert(Out.end(), Part.begin(), Part.end());
		}
		return Out;
	}

	void Append64(FBytes& Out, uint64_t Bits)
	{
		for (int Shift = 0; Shift < 64; Shift += 8)
		{
			Out.push_back(static_cast<uint8_t>(Bits >> Shift));
		}
	}

	int FindWord(const std::string& Text)
	{
		for (int Index = 0; Index < NumWords; ++Index)
		{
			if (Text == Words[Index])
			{
				return Index;
			}
		}
		return -1;
	}

	uint8_t KeyIndex(const char* Key)
	{
		for (int Index = 0; Index < NumKeys; ++Index)
		{
			if (std::strcmp(Key, Keys[Index]) == 0)
			{
				return static_cast<uint8_t>(Index);
			}
		}
		std::fprintf(stderr, "kest_fuzz seeds: no key %s\n", Key);
		std::abort();
	}

	FBytes Nil() { return {TagByte(EValueTag::Nil)}; }
	FBytes Bool(bool bValue) { return {TagByte(bValue ? EValueTag::True : EValueTag::False)}; }

	FBytes Int(int64_t Value)
	{
		if (Value >= -128 && Value <= 127)
		{
			return {TagByte(EValueTag::SmallInt), static_cast<uint8_t>(static_cast<int8_t>(Value))};
		}
		for (size_t Index = 0; Index < sizeof(EdgeInts) / sizeof(EdgeInts[0]); ++Index)
		{
			if (EdgeInts[Index] == Value)
			{
				return {TagByte(EValueTag::EdgeInt), static_cast<uint8_t>(Index)};
			}
		}
		FBytes Out = {TagByte(EValueTag::RawInt)};
		Append64(Out, static_cast<uint64_t>(Value));
		return Out;
	}

	FBytes Float(double Value)
	{
		for (size_t Index = 0; Index < sizeof(EdgeFloats) / sizeof(EdgeFloats[0]); ++Index)
		{
			if (std::memcmp(&EdgeFloats[Index], &Value, sizeof(double)) == 0)
			{
				return {TagByte(EValueTag::EdgeFloat), static_cast<uint8_t>(Index)};
			}
		}
		uint64_t Bits;
		std::memcpy(&Bits, &Value, sizeof(Bits));
		FBytes Out = {TagByte(EValueTag::RawFloat)};
		Append64(Out, Bits);
		return Out;
	}

	FBytes Str(const std::string& Text)
	{
		const int Word = FindWord(Text);
		if (Word >= 0)
		{
			return {TagByte(EValueTag::Word), static_cast<uint8_t>(Word)};
		}
		FBytes Out = {TagByte(EValueTag::RawString), static_cast<uint8_t>(Text.size())};
		Out.insert(Out.end(), Text.begin(), Text.begin() + static_cast<long>(std::min<size_t>(Text.size(), 255)));
		return Out;
	}

	FBytes WordWithTail(const char* Word, const std::string& Tail)
	{
		FBytes Out = {TagByte(EValueTag::WordWithTail), static_cast<uint8_t>(FindWord(Word)), static_cast<uint8_t>(Tail.size())};
		Out.insert(Out.end(), Tail.begin(), Tail.end());
		return Out;
	}

	FBytes LongWord(const char* Word, uint8_t Repeats64)
	{
		return {TagByte(EValueTag::LongWord), static_cast<uint8_t>(FindWord(Word)), Repeats64};
	}

	FBytes List(const std::vector<FBytes>& Items)
	{
		FBytes Out = {TagByte(EValueTag::List), static_cast<uint8_t>(Items.size())};
		for (const FBytes& Item : Items)
		{
			Out.insert(Out.end(), Item.begin(), Item.end());
		}
		return Out;
	}

	using FEntries = std::vector<std::pair<const char*, FBytes>>;

	FBytes ParamsPayload(const FEntries& Entries)
	{
		FBytes Out = {static_cast<uint8_t>(Entries.size())};
		for (const auto& [Key, Value] : Entries)
		{
			Out.push_back(KeyIndex(Key));
			Out.insert(Out.end(), Value.begin(), Value.end());
		}
		return Out;
	}

	FBytes Params(const FEntries& Entries)
	{
		return Cat({{TagByte(EValueTag::Params)}, ParamsPayload(Entries)});
	}

	FBytes Map(const std::vector<std::pair<FBytes, FBytes>>& Entries)
	{
		FBytes Out = {TagByte(EValueTag::Map), static_cast<uint8_t>(Entries.size())};
		for (const auto& [Key, Value] : Entries)
		{
			Out.insert(Out.end(), Key.begin(), Key.end());
			Out.insert(Out.end(), Value.begin(), Value.end());
		}
		return Out;
	}

	FBytes Userdata(EMetaVariant Variant, const FBytes& Payload = {})
	{
		return Cat({{TagByte(EValueTag::Userdata), static_cast<uint8_t>(Variant)}, Payload});
	}

	FBytes MetaTable(EMetaVariant Variant, const FBytes& Payload, const FEntries& RawContent)
	{
		return Cat({{TagByte(EValueTag::MetaTable), static_cast<uint8_t>(Variant)}, Payload, ParamsPayload(RawContent)});
	}

	FBytes RaiseOnKeyPayload(const char* Key, const FBytes& Answer)
	{
		return Cat({{KeyIndex(Key)}, Answer});
	}

	FBytes ReentrantGlobal(const FBytes& Answer, EGlobal Global, const std::vector<FBytes>& Args)
	{
		FBytes Out = Cat({{static_cast<uint8_t>(Args.size())}, Answer, {0, static_cast<uint8_t>(Global), 0}});
		for (const FBytes& Arg : Args)
		{
			Out.insert(Out.end(), Arg.begin(), Arg.end());
		}
		return Out;
	}

	FBytes ReentrantMethod(const FBytes& Answer, int Slot, int Method, const std::vector<FBytes>& Args)
	{
		FBytes Out = Cat({{static_cast<uint8_t>(Args.size())}, Answer, {1, static_cast<uint8_t>(Slot), static_cast<uint8_t>(Method), 0}});
		for (const FBytes& Arg : Args)
		{
			Out.insert(Out.end(), Arg.begin(), Arg.end());
		}
		return Out;
	}

	FBytes Handle(int Slot) { return {TagByte(EValueTag::Handle), static_cast<uint8_t>(Slot)}; }

	FBytes Huge(uint16_t Count, EHugeFill Fill, const FBytes& FillValue = {})
	{
		return Cat({{TagByte(EValueTag::HugeList), static_cast<uint8_t>(Count & 0xFF), static_cast<uint8_t>(Count >> 8), static_cast<uint8_t>(Fill)}, FillValue});
	}

	FBytes Deep(const char* Key, uint8_t Depth16, const FBytes& Inner)
	{
		return Cat({{TagByte(EValueTag::DeepChain), KeyIndex(Key), Depth16}, Inner});
	}

	FBytes Function(uint8_t Choice) { return {TagByte(EValueTag::Function), Choice}; }
	FBytes Thread() { return {TagByte(EValueTag::Thread)}; }
	FBytes LightUserdata() { return {TagByte(EValueTag::LightUserdata)}; }

	FBytes Call(bool bGlobal, int TargetA, int TargetB, ECallForm Form, const std::vector<FBytes>& Args, const FBytes& Self)
	{
		FBytes Out;
		if (bGlobal)
		{
			Out = {EncodeOp(EOp::CallGlobal), static_cast<uint8_t>(TargetA)};
		}
		else
		{
			Out = {EncodeOp(EOp::CallMethod), static_cast<uint8_t>(TargetA), static_cast<uint8_t>(TargetB)};
		}
		Out.push_back(static_cast<uint8_t>(Form));
		Out.push_back(static_cast<uint8_t>(FreeArgsFlag | Args.size()));
		if (Form == ECallForm::SelfValue)
		{
			Out.insert(Out.end(), Self.begin(), Self.end());
		}
		for (const FBytes& Arg : Args)
		{
			Out.insert(Out.end(), Arg.begin(), Arg.end());
		}
		return Out;
	}

	FBytes Global(EGlobal Which, const std::vector<FBytes>& Args, ECallForm Form = ECallForm::Colon, const FBytes& Self = {})
	{
		return Call(true, Which, 0, Form, Args, Self);
	}

	FBytes Method(int Slot, int Which, const std::vector<FBytes>& Args, ECallForm Form = ECallForm::Colon, const FBytes& Self = {})
	{
		return Call(false, Slot, Which, Form, Args, Self);
	}

	FBytes Op(EOp Which) { return {EncodeOp(Which)}; }

	// Typed mode: the arguments follow the signature, each a selector byte and its payload.
	FBytes TypedCall(bool bGlobal, int TargetA, int TargetB, ECallForm Form, const std::vector<FBytes>& Args)
	{
		FBytes Out = bGlobal ? FBytes{EncodeOp(EOp::CallGlobal), static_cast<uint8_t>(TargetA)}
			: FBytes{EncodeOp(EOp::CallMethod), static_cast<uint8_t>(TargetA), static_cast<uint8_t>(TargetB)};
		Out.push_back(static_cast<uint8_t>(Form));
		Out.push_back(0);
		for (const FBytes& Arg : Args)
		{
			Out.insert(Out.end(), Arg.begin(), Arg.end());
		}
		return Out;
	}
	FBytes TMethod(int Slot, int Which, const std::vector<FBytes>& Args, ECallForm Form = ECallForm::Colon)
	{
		return TypedCall(false, Slot, Which, Form, Args);
	}

	// Typed values: the selector picks the form, the rest is the payload of the value tag.
	FBytes Untag(FBytes Tagged)
	{
		Tagged.erase(Tagged.begin());
		return Tagged;
	}
	FBytes TS(const std::string& Text)
	{
		const FBytes Tagged = Str(Text);
		return Cat({{static_cast<uint8_t>(Tagged[0] == TagByte(EValueTag::Word) ? 0 : 10)}, Untag(Tagged)});
	}
	FBytes TN(int64_t Value)
	{
		const FBytes Tagged = Int(Value);
		const uint8_t Selector = Tagged[0] == TagByte(EValueTag::SmallInt) ? 0 : Tagged[0] == TagByte(EValueTag::EdgeInt) ? 6 : 13;
		return Cat({{Selector}, Untag(Tagged)});
	}
	FBytes TF(double Value)
	{
		const FBytes Tagged = Float(Value);
		return Cat({{static_cast<uint8_t>(Tagged[0] == TagByte(EValueTag::EdgeFloat) ? 10 : 14)}, Untag(Tagged)});
	}
	FBytes TI(int64_t Value)
	{
		const FBytes Tagged = Int(Value);
		const uint8_t Selector = Tagged[0] == TagByte(EValueTag::SmallInt) ? 0 : Tagged[0] == TagByte(EValueTag::EdgeInt) ? 8 : 13;
		return Cat({{Selector}, Untag(Tagged)});
	}
	FBytes TB(bool bValue) { return {static_cast<uint8_t>(bValue ? 1 : 0)}; }
	FBytes TAny(const FBytes& Tagged) { return Cat({{TypedEscape}, Tagged}); }
	FBytes TPPayload(const FEntries& Entries)
	{
		FBytes Out = {static_cast<uint8_t>(Entries.size())};
		for (const auto& [Key, Value] : Entries)
		{
			Out.push_back(KeyIndex(Key));
			Out.insert(Out.end(), Value.begin(), Value.end());
		}
		return Out;
	}
	FBytes TP(const FEntries& Entries) { return Cat({{0}, TPPayload(Entries)}); }
	FBytes TMeta(EMetaVariant Variant, const FBytes& Payload, const FEntries& Entries)
	{
		return Cat({{10, static_cast<uint8_t>(Variant)}, Payload, TPPayload(Entries)});
	}
	FBytes TList(const std::vector<FBytes>& Items)
	{
		FBytes Out = {0, static_cast<uint8_t>(Items.size())};
		for (const FBytes& Item : Items)
		{
			Out.insert(Out.end(), Item.begin(), Item.end());
		}
		return Out;
	}
	FBytes Headroom(uint8_t Index) { return {EncodeOp(EOp::MemoryHeadroom), Index}; }

	// A fixture-type mode table with functions and a matrix.
	FBytes FullMode()
	{
		return Params({
			{"name", Str("Extended")},
			{"auto_channel_span", Bool(false)},
			{"channel_span", Int(24)},
			{"functions", List({
				Params({{"attribute", Str("Dimmer")}, {"name", Str("Dim")}, {"data_type", Str("16BIT")}, {"use_lsb", Bool(true)},
					{"default_value", Int(4294967295LL)}, {"channel", Int(600)}, {"physical_default_value", Float(0.5)}}),
				Str("x"),
				Params({{"attribute", Str("Pan")}, {"physical_to", Int(255)}, {"data_type", Str("E64Bit")}, {"description", Str("\xff\xfe")}}),
				Params({{"attribute", Str("Tilt")}, {"physical_from", Int(10)}, {"default_value", Float(255.9)}}),
			})},
			{"matrix", Params({{"enabled", Bool(true)}, {"x_cells", Int(0)}, {"y_cells", Int(600)}, {"first_cell_channel", Float(std::nan(""))},
				{"distribution", Str("TOPLEFTTOCLOCKWISE")},
				{"cell_attributes", List({Params({{"attribute", Str("Red")}, {"data_type", Str("24bit")}}), Int(5), Params({{"default_value", Float(1e308)}})})}})},
		});
	}

	std::vector<std::pair<std::string, FBytes>> MakeSeeds()
	{
		std::vector<std::pair<std::string, FBytes>> Seeds;
		auto Add = [&Seeds](const char* Name, std::initializer_list<FBytes> Statements)
		{
			Seeds.emplace_back(Name, Cat(Statements));
		};

		Add("globals-valid", {
			Global(GlobalLibrary, {Str("/Game/DMX/FuzzLib")}),
			Global(GlobalLibrary, {Str("/Game/DMX/FuzzLib.FuzzLib")}),
			Global(GlobalComponent, {Str("Truss Rig")}),
			Global(GlobalSubsystem, {}),
			Method(SlotFirstOpened, LibInfo, {}),
			Method(SlotFirstOpened + 2, CompInfo, {}),
			Method(SlotFirstOpened + 3, IntToBytes, {Int(300), Str("16bit"), Bool(false)}),
		});
		Add("globals-bad-arguments", {
			Global(GlobalLibrary, {Int(5)}),
			Global(GlobalLibrary, {}),
			Global(GlobalComponent, {Nil()}),
			Global(GlobalComponent, {Float(1.0)}),
			Global(GlobalLibrary, {Str("")}),
			Global(GlobalLibrary, {Str("/Game/My.Folder/FuzzLib")}),
			Global(GlobalLibrary, {Str("/Engine/Transient.EditorEngine")}),
			Global(GlobalComponent, {Str("")}),
			Global(GlobalSubsystem, {Int(1), Nil(), Thread()}),
			Global(GlobalLibrary, {}, ECallForm::SelfValue, Params({})),
		});
		Add("library-info", {
			Method(SlotLibrary, LibInfo, {}),
			Method(SlotOtherLibrary, LibInfo, {}),
			Method(SlotMissingLibrary, LibInfo, {}),
			Method(SlotLibraryObjectPath, LibInfo, {}, ECallForm::Dot),
		});
		Add("library-add-fixture-type-full", {
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Params({{"name", Str("Spot")}, {"category", Str("Moving Head")}, {"modes", List({FullMode(), Params({})})}})}),
			Method(SlotLibrary, LibInfo, {}),
		});
		Add("library-add-fixture-type-defaults", {
			Method(SlotLibrary, LibAdd, {Str("FIXTURE_TYPE"), Params({})}),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Params({{"modes", List({})}})}),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Params({{"modes", List({Params({}), Str("x"), Params({{"name", Str("")}})})}})}),
			Method(SlotMissingLibrary, LibAdd, {Str("fixture_type"), Params({})}),
		});
		Add("library-add-fixture-patch", {
			Method(SlotLibrary, LibAdd, {Str("fixture_patch"), Params({{"fixture_type", Str("spot")}, {"name", Str("Spot1")}, {"universe", Int(2)},
				{"starting_channel", Int(17)}, {"active_mode_index", Int(1)}, {"tags", List({Str("a"), Int(5), Str("b"), Str("\xc3")})},
				{"receive_dmx_in_editor", Bool(true)}, {"editor_color", Params({{"r", Float(1e308)}, {"g", Float(-0.0)}, {"b", Float(std::nan(""))}, {"a", Str("1")}})}})}),
			Method(SlotLibrary, LibInfo, {}),
		});
		Add("library-add-fixture-patch-clamps", {
			Method(SlotLibrary, LibAdd, {Str("fixture_patch"), Params({{"fixture_type", Str("Wash")}, {"starting_channel", Int(0)}, {"universe", Int(-3)}})}),
			Method(SlotLibrary, LibAdd, {Str("fixture_patch"), Params({{"fixture_type", Str("Wash")}, {"starting_channel", Int(513)}, {"universe", Float(1e12)}, {"active_mode_index", Float(std::nan(""))}})}),
			Method(SlotLibrary, LibAdd, {Str("fixture_patch"), Params({{"fixture_type", Str("Wash")}, {"starting_channel", Int(std::numeric_limits<int64_t>::min())}, {"universe", Str("3")}})}),
			Method(SlotLibrary, LibAdd, {Str("fixture_patch"), Params({})}),
			Method(SlotLibrary, LibAdd, {Str("fixture_patch"), Params({{"fixture_type", Str("Missing")}})}),
		});
		Add("library-add-bad-kinds", {
			Method(SlotLibrary, LibAdd, {Str("fixture"), Params({})}),
			Method(SlotLibrary, LibAdd, {Str(""), Params({})}),
			Method(SlotLibrary, LibAdd, {WordWithTail("fixture_type", std::string("\0x", 2)), Params({})}),
			Method(SlotLibrary, LibAdd, {Int(1), Params({})}),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Int(1)}),
			Method(SlotLibrary, LibAdd, {Str("fixture_type")}),
		});
		Add("library-configure-fixture-type", {
			Method(SlotLibrary, LibConfigure, {Str("fixture_type"), Str("SPOT"), Params({{"name", Str("Spot \xf0\x9f\x92\xa1")}, {"category", Str("")}, {"modes", List({FullMode()})}})}),
			Method(SlotLibrary, LibConfigure, {Str("fixture_type"), Str("Wash"), Params({{"modes", List({})}})}),
			Method(SlotLibrary, LibConfigure, {Str("fixture_type"), Str("Dup"), Params({{"name", Str("")}})}),
			Method(SlotLibrary, LibInfo, {}),
		});
		Add("library-configure-fixture-patch", {
			Method(SlotLibrary, LibConfigure, {Str("fixture_patch"), Str("front"), Params({{"fixture_type", Str("Spot")}, {"universe", Int(-1)},
				{"starting_channel", Int(0)}, {"active_mode_index", Int(2147483647)}, {"tags", List({})}, {"receive_dmx_in_editor", Bool(false)},
				{"editor_color", Params({{"a", Float(0.5)}})}, {"name", Str("Sp\xc3\xb6t")}})}),
			Method(SlotLibrary, LibConfigure, {Str("fixture_patch"), Str("Spot1"), Params({})}),
			Method(SlotLibrary, LibConfigure, {Str("fixture_patch"), Str("Orphan"), Params({{"fixture_type", Str("Missing")}, {"active_mode_index", Int(3)}})}),
			Method(SlotLibrary, LibInfo, {}),
		});
		Add("library-configure-failures", {
			Method(SlotLibrary, LibConfigure, {Str("fixture_patch"), Str("Missing"), Params({})}),
			Method(SlotLibrary, LibConfigure, {Str("fixture"), Str("Spot"), Params({})}),
			Method(SlotMissingLibrary, LibConfigure, {Str("fixture_type"), Str("Spot"), Params({})}),
			Method(SlotLibrary, LibConfigure, {Str("fixture_type"), Int(3), Params({})}),
			Method(SlotLibrary, LibConfigure, {Str("fixture_type"), Str("Spot"), Nil()}),
		});
		Add("library-remove", {
			Method(SlotLibrary, LibRemove, {Str("fixture_patch"), Str("FRONT")}),
			Method(SlotLibrary, LibRemove, {Str("Fixture_Patch"), Str("front")}),
			Method(SlotLibrary, LibRemove, {Str("fixture_patch"), Str("front")}),
			Method(SlotLibrary, LibRemove, {Str("fixture_type"), Str("Spot")}),
			Method(SlotLibrary, LibRemove, {Str("fixture_type"), Str("")}),
			Method(SlotLibrary, LibRemove, {Str("fixture_type"), Int(3)}),
			Method(SlotMissingLibrary, LibRemove, {Str("fixture_type"), Str("Spot")}),
			Method(SlotLibrary, LibInfo, {}),
		});
		Add("library-dot-and-self", {
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Params({})}, ECallForm::Dot),
			Method(SlotLibrary, LibRemove, {Str("fixture_type"), Str("Spot")}, ECallForm::Dot),
			Method(SlotLibrary, LibInfo, {}, ECallForm::SelfValue, Int(3)),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Params({})}, ECallForm::SelfValue, Userdata(EMetaVariant::None)),
			Method(SlotLibrary, LibConfigure, {Str("fixture_type"), Str("Spot"), Params({})}, ECallForm::SelfValue, Handle(SlotStageLeft)),
		});
		Add("component-add", {
			Method(SlotBare, CompAdd, {Params({})}),
			Method(SlotBare, CompAdd, {Params({{"name", Str("dmxcomponent")}})}),
			Method(SlotBare, CompAdd, {Params({{"name", Str("DMX2")}, {"library", Str("/Game/DMX/FuzzLib")}, {"fixture_patch", Str("Spot1")}, {"receive", Bool(true)}})}),
			Method(SlotStageLeft, CompAdd, {Params({{"name", Str("")}, {"library", Int(5)}, {"receive", Int(1)}})}),
			Method(SlotTrussRig, CompAdd, {Params({{"library", Str("/Game/DMX/Missing")}})}),
			Method(SlotMissingActor, CompAdd, {Params({})}),
			Method(SlotBare, CompInfo, {}),
		});
		Add("component-configure", {
			Method(SlotTrussRig, CompConfigure, {Str(""), Params({{"library", Str("/Game/DMX/Other")}, {"fixture_patch", Str("OtherPatch")}, {"receive", Bool(false)}})}),
			Method(SlotTrussRig, CompConfigure, {Str("DMX3"), Params({{"library", Str("/Game/DMX/FuzzLib.FuzzLib")}, {"fixture_patch", Str("FRONT")}})}),
			Method(SlotTrussRig, CompConfigure, {Str("Missing"), Params({})}),
			Method(SlotTrussRig, CompConfigure, {Nil(), Params({})}),
			Method(SlotStageLeft, CompConfigure, {Str("DMXComponent"), Params({{"library", Str("/Engine/Transient.EditorEngine")}})}),
			Method(SlotMissingActor, CompConfigure, {Str(""), Params({})}),
			Method(SlotTrussRig, CompInfo, {}),
		});
		Add("component-info", {
			Method(SlotStageLeft, CompInfo, {}),
			Method(SlotTrussRig, CompInfo, {}),
			Method(SlotBare, CompInfo, {}),
			Method(SlotMissingActor, CompInfo, {}),
			Global(GlobalComponent, {Str("stageleft")}),
			Method(SlotFirstOpened, CompInfo, {}),
		});
		Add("subsystem-int-to-bytes", {
			Method(SlotSubsystem, IntToBytes, {Int(300), Str("e32bit"), Bool(true)}),
			Method(SlotSubsystem, IntToBytes, {Int(-1), Str("24bit"), Bool(false)}),
			Method(SlotSubsystem, IntToBytes, {Int(std::numeric_limits<int64_t>::max()), Str("9bit"), Bool(false)}),
			Method(SlotSubsystem, IntToBytes, {Float(2.5), Str("8bit"), Bool(false)}),
			Method(SlotSubsystem, IntToBytes, {Float(3.0), Str("8bit"), Bool(false)}),
			Method(SlotSubsystem, IntToBytes, {Int(3), Str("8bit"), Nil()}),
			Method(SlotSubsystem, IntToBytes, {Int(3), Str("8bit"), Bool(false)}, ECallForm::Dot),
		});
		Add("subsystem-bytes-to-int", {
			Method(SlotSubsystem, BytesToInt, {List({Int(1), Int(2), Int(300), Int(-4)}), Bool(false)}),
			Method(SlotSubsystem, BytesToInt, {List({Float(1.0)}), Bool(false)}),
			Method(SlotSubsystem, BytesToInt, {List({Int(1), Str("x"), Bool(true), Params({})}), Bool(true)}),
			Method(SlotSubsystem, BytesToInt, {Map({{Str("level"), Int(200)}, {Int(10), Int(5)}}), Bool(false)}),
			Method(SlotSubsystem, BytesToInt, {Huge(5000, EHugeFill::Byte), Bool(false)}),
			Method(SlotSubsystem, BytesToInt, {Userdata(EMetaVariant::RaiseTable), Bool(false)}),
			Method(SlotSubsystem, BytesToInt, {Int(3), Bool(false)}),
		});
		Add("subsystem-normalized", {
			Method(SlotSubsystem, NormalizedToBytes, {Float(std::nan("")), Str("16bit"), Bool(false)}),
			Method(SlotSubsystem, NormalizedToBytes, {Float(std::numeric_limits<double>::infinity()), Str("32bit"), Bool(true)}),
			Method(SlotSubsystem, NormalizedToBytes, {Float(-0.0), Str(""), Bool(false)}),
			Method(SlotSubsystem, NormalizedToBytes, {Float(1e308), Str("24bit"), Bool(false)}),
			Method(SlotSubsystem, NormalizedToBytes, {Int(std::numeric_limits<int64_t>::min()), Str("24bit"), Bool(false)}),
			Method(SlotSubsystem, BytesToNormalized, {List({Int(255), Int(255)}), Bool(false)}),
			Method(SlotSubsystem, BytesToNormalized, {List({Int(1), Float(0.5)}), Bool(true)}),
			Method(SlotSubsystem, BytesToNormalized, {Huge(6, EHugeFill::Index), Bool(true)}),
			Method(SlotSubsystem, BytesToNormalized, {Userdata(EMetaVariant::None), Bool(true)}),
		});
		Add("metamethod-raises-table", {
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Userdata(EMetaVariant::RaiseTable)}),
			Method(SlotLibrary, LibConfigure, {Str("fixture_patch"), Str("Spot1"), MetaTable(EMetaVariant::RaiseTable, {}, {{"universe", Int(4)}})}),
			Method(SlotBare, CompAdd, {Userdata(EMetaVariant::RaiseTable)}),
			Method(SlotTrussRig, CompConfigure, {Str("DMX2"), Userdata(EMetaVariant::RaiseTable)}),
		});
		Add("metamethod-raises-string", {
			Method(SlotLibrary, LibAdd, {Str("fixture_patch"), MetaTable(EMetaVariant::RaiseString, {}, {{"fixture_type", Str("Spot")}})}),
			Method(SlotLibrary, LibConfigure, {Str("fixture_type"), Str("Spot"), Params({{"modes", List({MetaTable(EMetaVariant::RaiseString, {}, {{"name", Str("M")}})})}})}),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Params({{"modes", List({Params({{"functions", List({MetaTable(EMetaVariant::RaiseString, {}, {})})}})})}})}),
			Method(SlotLibrary, LibInfo, {}),
		});
		Add("metamethod-raises-on-key", {
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Params({{"modes", List({MetaTable(EMetaVariant::RaiseOnKey, RaiseOnKeyPayload("matrix", Nil()), {{"name", Str("Half")}})})}})}),
			Method(SlotLibrary, LibAdd, {Str("fixture_patch"), Userdata(EMetaVariant::RaiseOnKey, RaiseOnKeyPayload("tags", Str("Spot")))}),
			Method(SlotLibrary, LibConfigure, {Str("fixture_patch"), Str("Spot1"), MetaTable(EMetaVariant::RaiseOnKey, RaiseOnKeyPayload("editor_color", Int(7)), {})}),
			Method(SlotLibrary, LibInfo, {}),
		});
		Add("userdata-params", {
			Method(SlotLibrary, LibAdd, {Str("fixture_patch"), Userdata(EMetaVariant::IndexTable, Params({{"fixture_type", Str("Wash")}, {"universe", Int(9)}}))}),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Userdata(EMetaVariant::IndexReturns, Str("Spot"))}),
			Method(SlotLibrary, LibConfigure, {Str("fixture_patch"), Str("Spot1"), Userdata(EMetaVariant::IndexReturns, Float(0.5))}),
			Method(SlotBare, CompAdd, {Userdata(EMetaVariant::IndexReturns, Str("/Game/DMX/FuzzLib"))}),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Userdata(EMetaVariant::None)}),
		});
		Add("userdata-lists", {
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Params({{"modes", Userdata(EMetaVariant::IndexReturns, Params({}))}})}),
			Method(SlotLibrary, LibConfigure, {Str("fixture_patch"), Str("Spot1"), Params({{"tags", Userdata(EMetaVariant::RaiseTable)},
				{"editor_color", Userdata(EMetaVariant::IndexReturns, Float(0.25))}})}),
			Method(SlotLibrary, LibConfigure, {Str("fixture_type"), Str("Spot"), Params({{"modes", List({Params({{"functions", Userdata(EMetaVariant::RaiseString)},
				{"matrix", Userdata(EMetaVariant::IndexReturns, Int(3))}})})}})}),
			Method(SlotLibrary, LibConfigure, {Str("fixture_type"), Str("Spot"), Params({{"modes", List({Params({{"matrix", Params({{"cell_attributes", Userdata(EMetaVariant::None)}})}})})}})}),
			Method(SlotLibrary, LibInfo, {}),
		});
		Add("reentrant-remove-during-configure", {
			Method(SlotLibrary, LibConfigure, {Str("fixture_type"), Str("Spot"), Params({{"modes", List({
				MetaTable(EMetaVariant::Reentrant, ReentrantMethod(Str("Renamed"), SlotLibrary, LibRemove, {Str("fixture_type"), Str("Spot")}), {}),
				Params({{"functions", List({Params({})})}})})}})}),
			Method(SlotLibrary, LibInfo, {}),
		});
		Add("reentrant-empty-modes-during-apply", {
			Method(SlotLibrary, LibConfigure, {Str("fixture_type"), Str("Spot"), Params({{"modes", List({
				MetaTable(EMetaVariant::Reentrant, ReentrantMethod(Params({}), SlotLibrary, LibConfigure, {Str("fixture_type"), Str("Spot"), Params({{"modes", List({})}})}),
					{{"name", Str("A")}})})}})}),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Params({{"modes", List({Params({{"matrix",
				MetaTable(EMetaVariant::Reentrant, ReentrantMethod(Int(600), SlotLibrary, LibConfigure, {Str("fixture_type"), Str("FixtureType"), Params({{"modes", List({})}})}), {})}})})}})}),
			Method(SlotLibrary, LibInfo, {}),
		});
		Add("reentrant-component", {
			Method(SlotBare, CompAdd, {Userdata(EMetaVariant::Reentrant, ReentrantMethod(Str("DMXComponent"), SlotBare, CompAdd, {Params({})}))}),
			Method(SlotTrussRig, CompConfigure, {Str("DMX2"), Userdata(EMetaVariant::Reentrant,
				ReentrantMethod(Str("/Game/DMX/FuzzLib"), SlotLibrary, LibRemove, {Str("fixture_patch"), Str("Front")}))}),
			Method(SlotBare, CompAdd, {Userdata(EMetaVariant::Reentrant, ReentrantGlobal(Nil(), GlobalLibrary, {Int(3)}))}),
			Method(SlotTrussRig, CompInfo, {}),
		});
		Add("huge-lists", {
			Method(SlotLibrary, LibConfigure, {Str("fixture_patch"), Str("Spot1"), Params({{"tags", Huge(60000, EHugeFill::Words)}})}),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Params({{"modes", Huge(40, EHugeFill::EmptyTables)}})}),
			Method(SlotLibrary, LibConfigure, {Str("fixture_type"), Str("Wash"), Params({{"modes", List({Params({{"functions", Huge(200, EHugeFill::EmptyTables)}})})}})}),
			Method(SlotSubsystem, BytesToInt, {Huge(65535, EHugeFill::HalfFloat), Bool(false)}),
			Method(SlotLibrary, LibInfo, {}),
		});
		Add("deep-tables", {
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Deep("modes", 40, Params({}))}),
			Method(SlotLibrary, LibConfigure, {Str("fixture_type"), Str("Spot"), Params({{"modes", List({Deep("matrix", 20, Int(3))})}})}),
			Method(SlotSubsystem, BytesToInt, {Deep("x", 10, Int(1)), Bool(false)}),
		});
		Add("undo-redo", {
			Method(SlotLibrary, LibAdd, {Str("fixture_patch"), Params({{"fixture_type", Str("Spot")}, {"name", Str("Later")}})}),
			Method(SlotBare, CompAdd, {Params({{"library", Str("/Game/DMX/FuzzLib")}, {"fixture_patch", Str("Later")}})}),
			Op(EOp::Undo),
			Op(EOp::Undo),
			Method(SlotBare, CompInfo, {}),
			Op(EOp::Redo),
			Method(SlotLibrary, LibRemove, {Str("fixture_type"), Str("Spot")}),
			Op(EOp::Undo),
			Method(SlotLibrary, LibInfo, {}),
			Op(EOp::CollectGarbage),
			Method(SlotStageLeft, CompInfo, {}),
		});
		Add("memory-ceiling", {
			Headroom(4),
			Method(SlotLibrary, LibInfo, {}),
			Headroom(3),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Params({{"modes", List({FullMode()})}})}),
			Headroom(1),
			Method(SlotSubsystem, IntToBytes, {Int(7), Str("32bit"), Bool(false)}),
			Method(SlotLibrary, LibAdd, {Str("fixture"), Int(1)}),
			Headroom(5),
			Method(SlotTrussRig, CompInfo, {}),
			Global(GlobalLibrary, {Str("/Game/DMX/FuzzLib")}),
			Headroom(0),
			Method(SlotLibrary, LibInfo, {}),
		});
		Add("coroutines", {
			Method(SlotLibrary, LibInfo, {}, ECallForm::Coroutine),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Params({{"name", Str("Co")}})}, ECallForm::Coroutine),
			Method(SlotSubsystem, BytesToInt, {List({Float(0.5)}), Bool(false)}, ECallForm::Coroutine),
			Method(SlotStageLeft, CompAdd, {Userdata(EMetaVariant::RaiseString)}, ECallForm::Coroutine),
			Global(GlobalComponent, {Str("Rig")}, ECallForm::Coroutine),
		});
		Add("odd-userdata-names", {
			Global(GlobalLibrary, {Userdata(EMetaVariant::OddName, Params({}))}),
			Global(GlobalLibrary, {Userdata(EMetaVariant::OddName, Str("Spot"))}),
			Global(GlobalComponent, {Userdata(EMetaVariant::OddName, WordWithTail("Spot", std::string("\0%s", 3)))}),
			Method(SlotSubsystem, IntToBytes, {Userdata(EMetaVariant::OddName, Int(5)), Str("8bit"), Bool(false)}),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Userdata(EMetaVariant::OddName, Int(5))}),
		});
		Add("malformed-text", {
			Global(GlobalLibrary, {Str("/Game/DMX/FuzzLib\xff")}),
			Global(GlobalLibrary, {WordWithTail("/Game/DMX/FuzzLib", std::string("\0.x", 3))}),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Params({{"name", LongWord("\xf0\x9f\x92\xa1", 200)}, {"category", Str("\xed\xa0\x80")}})}),
			Method(SlotLibrary, LibConfigure, {WordWithTail("fixture_patch", std::string("\0", 1)), Str("Spot1"), Params({{"name", Str("\xc0\xaf")}})}),
			Method(SlotLibrary, LibRemove, {Str("fixture_patch"), WordWithTail("Spot1", std::string("\0tail", 5))}),
			Global(GlobalComponent, {LongWord("Rig", 255)}),
			Method(SlotSubsystem, IntToBytes, {Int(65535), Str("%s%d%n"), Bool(true)}),
			Method(SlotLibrary, LibInfo, {}),
		});
		Add("every-type-as-params", {
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Nil()}),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Bool(true)}),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Float(std::nan(""))}),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Str("params")}),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Function(0)}),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Thread()}),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), LightUserdata()}),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Handle(SlotLibrary)}),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Function(2)}),
		});
		Add("every-type-as-keys", {
			Method(SlotLibrary, LibAdd, {Str("fixture_patch"), Params({{"fixture_type", Str("Spot")}, {"universe", Bool(true)}, {"starting_channel", Str("5")},
				{"name", Int(4)}, {"tags", Str("a")}, {"receive_dmx_in_editor", Int(1)}, {"editor_color", Function(1)}, {"active_mode_index", Thread()}})}),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Params({{"name", LightUserdata()}, {"modes", Map({{Str("k"), Params({})}, {Float(0.5), Params({})}, {Bool(true), Str("x")}})}})}),
			Method(SlotBare, CompAdd, {Params({{"name", Int(3)}, {"library", Params({})}, {"fixture_patch", Int(1)}, {"receive", Str("true")}})}),
		});
		Add("function-edges", {
			Method(SlotLibrary, LibConfigure, {Str("fixture_type"), Str("Wash"), Params({{"modes", List({Params({{"channel_span", Int(-5)}, {"functions", List({
				Params({{"default_value", Float(-2147483649.0)}, {"channel", Int(0)}, {"physical_from", Float(std::numeric_limits<double>::infinity())}}),
				Params({{"default_value", Int(std::numeric_limits<int64_t>::max())}, {"physical_to", Float(std::nan(""))}, {"physical_default_value", Float(-1e308)}}),
				Params({{"data_type", Str("E16Bit")}, {"use_lsb", Bool(true)}, {"channel", Int(512)}}),
			})}, {"matrix", Params({})}})})}})}),
			Method(SlotLibrary, LibInfo, {}),
		});
		Add("matrix-edges", {
			Method(SlotLibrary, LibConfigure, {Str("fixture_type"), Str("Spot"), Params({{"modes", List({Params({{"matrix", Params({{"enabled", Bool(true)},
				{"x_cells", Int(512)}, {"y_cells", Int(512)}, {"first_cell_channel", Int(512)}, {"distribution", Str("Top Left To Bottom")},
				{"cell_attributes", List({Params({{"use_lsb", Bool(true)}, {"data_type", Str("32bit")}}), Params({{"attribute", Str("")}})})}})}}),
				Params({{"matrix", Params({{"distribution", Str("TopLeftToRight")}, {"enabled", Bool(false)}})}})})}})}),
			Method(SlotLibrary, LibAdd, {Str("fixture_patch"), Params({{"fixture_type", Str("Spot")}, {"starting_channel", Int(400)}})}),
			Method(SlotLibrary, LibInfo, {}),
		});
		Add("handles-from-globals", {
			Global(GlobalLibrary, {Str("/Game/DMX/Other")}),
			Global(GlobalComponent, {Str("Stage Left")}),
			Global(GlobalLibrary, {Str("")}),
			Method(SlotFirstOpened, LibAdd, {Str("fixture_patch"), Params({{"fixture_type", Str("Pixel")}})}),
			Method(SlotFirstOpened + 1, CompConfigure, {Str(""), Params({{"library", Str("/Game/DMX/Other")}, {"fixture_patch", Str("OtherPatch")}})}),
			Method(SlotFirstOpened + 2, LibRemove, {Str("fixture_type"), Str("Pixel")}),
			Method(SlotFirstOpened, LibInfo, {}),
		});
		Add("garbage-between-calls", {
			Method(SlotLibrary, LibInfo, {}),
			Op(EOp::CollectGarbage),
			Global(GlobalSubsystem, {}),
			Op(EOp::CollectGarbage),
			Method(SlotFirstOpened, BytesToNormalized, {List({Int(128)}), Bool(false)}),
			Method(SlotLibrary, LibAdd, {Str("fixture_type"), Params({{"modes", List({MetaTable(EMetaVariant::Collect, Int(2), {{"name", Str("Mode")}})})}})}),
			Method(SlotTrussRig, CompConfigure, {Str("DMX2"), Userdata(EMetaVariant::Collect, Str("/Game/DMX/Other"))}),
		});
		Add("reentrant-remove-type-while-patching", {
			Method(SlotLibrary, LibAdd, {Str("fixture_patch"), MetaTable(EMetaVariant::Reentrant,
				ReentrantMethod(Nil(), SlotLibrary, LibRemove, {Str("fixture_type"), Str("Spot")}), {{"fixture_type", Str("Spot")}, {"name", Str("Late")}})}),
			Method(SlotLibrary, LibConfigure, {Str("fixture_patch"), Str("Front"), MetaTable(EMetaVariant::Reentrant,
				ReentrantMethod(Nil(), SlotLibrary, LibRemove, {Str("fixture_type"), Str("Wash")}), {{"fixture_type", Str("Wash")}, {"active_mode_index", Int(0)}})}),
			Method(SlotLibrary, LibInfo, {}),
			Op(EOp::Undo),
			Method(SlotLibrary, LibInfo, {}),
		});
		Add("reentrant-info-while-building", {
			Method(SlotLibrary, LibConfigure, {Str("fixture_type"), Str("Spot"), Params({{"modes", List({
				MetaTable(EMetaVariant::Reentrant, ReentrantMethod(Nil(), SlotLibrary, LibInfo, {}), {{"name", Str("Half")}, {"functions", List({Params({})})}})})}})}),
			Method(SlotLibrary, LibAdd, {Str("fixture_patch"), MetaTable(EMetaVariant::Reentrant,
				ReentrantMethod(Nil(), SlotTrussRig, CompInfo, {}), {{"fixture_type", Str("Spot")}})}),
			Method(SlotTrussRig, CompConfigure, {Str("DMX2"), MetaTable(EMetaVariant::Reentrant,
				ReentrantMethod(Nil(), SlotLibrary, LibRemove, {Str("fixture_patch"), Str("Spot1")}), {{"library", Str("/Game/DMX/FuzzLib")}, {"fixture_patch", Str("Spot1")}})}),
			Method(SlotTrussRig, CompInfo, {}),
		});
		Add("typed-library-add", {
			TMethod(SlotLibrary, LibAdd, {TS("fixture_type"), TP({{"name", TS("Moving")}, {"modes", TList({
				TP({{"name", TS("M1")}, {"channel_span", TN(-5)}, {"functions", TList({TP({{"attribute", TS("Dimmer")}, {"data_type", TS("16BIT")},
					{"default_value", TN(4294967295LL)}, {"physical_to", TF(255.9)}}), TP({{"channel", TF(1e308)}})})},
					{"matrix", TP({{"enabled", TB(true)}, {"x_cells", TN(600)}, {"cell_attributes", TList({TP({{"attribute", TS("Red")}})})}})}}),
				TMeta(EMetaVariant::RaiseOnKey, RaiseOnKeyPayload("matrix", Nil()), {{"name", TS("Half")}}),
			})}})}),
			TMethod(SlotLibrary, LibAdd, {TS("fixture_patch"), TP({{"fixture_type", TS("Moving")}, {"universe", TF(std::nan(""))},
				{"starting_channel", TN(513)}, {"tags", TList({TS("a"), TS("\xc3")})}, {"editor_color", TP({{"r", TF(-0.0)}, {"a", TN(7)}})}})}),
			TMethod(SlotLibrary, LibInfo, {}),
		});
		Add("typed-library-configure-remove", {
			TMethod(SlotLibrary, LibConfigure, {TS("fixture_patch"), TS("FRONT"), TP({{"fixture_type", TS("dup")}, {"active_mode_index", TN(2147483648LL)},
				{"receive_dmx_in_editor", TB(true)}, {"name", TS("")}})}),
			TMethod(SlotLibrary, LibConfigure, {TS("fixture_type"), TS("Wash"), TP({{"category", TS("Wash")}, {"modes", TList({TP({}), TAny(Str("x"))})}})}),
			TMethod(SlotLibrary, LibRemove, {TS("fixture_type"), TS("Wash")}),
			TMethod(SlotLibrary, LibRemove, {TS("fixture_patch"), TS("")}),
			TMethod(SlotLibrary, LibInfo, {}),
		});
		Add("typed-component", {
			TMethod(SlotBare, CompAdd, {TP({{"name", TS("DMX2")}, {"library", TS("/Game/DMX/Other")}, {"fixture_patch", TS("OtherPatch")}, {"receive", TB(true)}})}),
			TMethod(SlotTrussRig, CompConfigure, {TS("dmx3"), TP({{"library", TS("/Game/DMX/FuzzLib")}, {"fixture_patch", TS("Orphan")}})}),
			TMethod(SlotStageLeft, CompInfo, {}),
		});
		Add("typed-conversions", {
			TMethod(SlotSubsystem, IntToBytes, {TI(-1), TS("24bit"), TB(true)}),
			TMethod(SlotSubsystem, BytesToInt, {TList({TI(1), TI(300), TI(-4), TI(2147483648LL)}), TB(false)}),
			TMethod(SlotSubsystem, NormalizedToBytes, {TF(0.999999), TS("E16Bit"), TB(false)}),
			TMethod(SlotSubsystem, BytesToNormalized, {TList({TI(255), TI(0), TI(7)}), TB(true)}),
			TMethod(SlotSubsystem, IntToBytes, {TI(3), TS("8bit"), TB(false)}, ECallForm::Dot),
		});
		Add("typed-reentrant", {
			TMethod(SlotLibrary, LibConfigure, {TS("fixture_patch"), TS("Spot1"), TMeta(EMetaVariant::Reentrant,
				ReentrantMethod(Int(3), SlotLibrary, LibRemove, {Str("fixture_patch"), Str("Spot1")}), {{"name", TS("Moved")}})}),
			TMethod(SlotLibrary, LibAdd, {TS("fixture_type"), TP({{"modes", TList({TMeta(EMetaVariant::Reentrant,
				ReentrantMethod(Str("16bit"), SlotLibrary, LibAdd, {Str("fixture_type"), Params({{"name", Str("Inner")}})}), {})})}})}),
			TMethod(SlotLibrary, LibInfo, {}),
		});
		return Seeds;
	}
}

bool WriteKestFuzzSeedCorpus(const char* Directory)
{
	for (const auto& [Name, Bytes] : MakeSeeds())
	{
		const std::string Path = std::string(Directory) + "/" + Name;
		FILE* File = std::fopen(Path.c_str(), "wb");
		if (File == nullptr)
		{
			std::fprintf(stderr, "kest_fuzz: cannot write %s\n", Path.c_str());
			return false;
		}
		const bool bWritten = std::fwrite(Bytes.data(), 1, Bytes.size(), File) == Bytes.size();
		std::fclose(File);
		if (!bWritten)
		{
			return false;
		}
	}
	return true;
}

bool WriteKestFuzzDictionary(const char* Path)
{
	FILE* File = std::fopen(Path, "w");
	if (File == nullptr)
	{
		std::fprintf(stderr, "kest_fuzz: cannot write %s\n", Path);
		return false;
	}
	auto Write = [File](const std::string& Name, const FBytes& Bytes)
	{
		std::fprintf(File, "%s=\"", Name.c_str());
		for (const uint8_t Byte : Bytes)
		{
			std::fprintf(File, "\\x%02X", Byte);
		}
		std::fprintf(File, "\"\n");
	};
	std::fprintf(File, "# kest_fuzz dictionary, written by kest_fuzz -kest_write_dict=FILE: call headers with the\n"
		"# usual number of arguments, the dictionary words and the edge numbers as values.\n");
	const int LibraryArgs[] = {0, 2, 3, 2};
	const int ComponentArgs[] = {0, 1, 2};
	const int SubsystemArgs[] = {3, 2, 3, 2};
	for (int Slot = 0; Slot < NumInitialHandles; ++Slot)
	{
		const EHandleKind Kind = InitialHandles[Slot].Kind;
		const int NumMethods = Kind == EHandleKind::Component ? 3 : 4;
		for (int Which = 0; Which < NumMethods; ++Which)
		{
			const int Argc = Kind == EHandleKind::Library ? LibraryArgs[Which] : Kind == EHandleKind::Component ? ComponentArgs[Which] : SubsystemArgs[Which];
			Write("call_" + std::to_string(Slot) + "_" + std::to_string(Which), {EncodeOp(EOp::CallMethod), static_cast<uint8_t>(Slot), static_cast<uint8_t>(Which), 0, static_cast<uint8_t>(FreeArgsFlag | Argc)});
			Write("typed_call_" + std::to_string(Slot) + "_" + std::to_string(Which), {EncodeOp(EOp::CallMethod), static_cast<uint8_t>(Slot), static_cast<uint8_t>(Which), 0, 0});
		}
	}
	for (int Global = 0; Global < 3; ++Global)
	{
		Write("global_" + std::to_string(Global), {EncodeOp(EOp::CallGlobal), static_cast<uint8_t>(Global), 0, static_cast<uint8_t>(FreeArgsFlag | (Global == 2 ? 0 : 1))});
	}
	for (int Word = 0; Word < NumWords; ++Word)
	{
		Write("word_" + std::to_string(Word), {TagByte(EValueTag::Word), static_cast<uint8_t>(Word)});
	}
	for (int Key = 0; Key < NumKeys; ++Key)
	{
		Write("params_" + std::string(Keys[Key]), {TagByte(EValueTag::Params), 1, static_cast<uint8_t>(Key)});
	}
	for (size_t Index = 0; Index < sizeof(EdgeInts) / sizeof(EdgeInts[0]); ++Index)
	{
		Write("int_" + std::to_string(Index), {TagByte(EValueTag::EdgeInt), static_cast<uint8_t>(Index)});
	}
	for (size_t Index = 0; Index < sizeof(EdgeFloats) / sizeof(EdgeFloats[0]); ++Index)
	{
		Write("float_" + std::to_string(Index), {TagByte(EValueTag::EdgeFloat), static_cast<uint8_t>(Index)});
	}
	for (int Variant = 0; Variant < static_cast<int>(EMetaVariant::Count); ++Variant)
	{
		Write("userdata_" + std::to_string(Variant), {TagByte(EValueTag::Userdata), static_cast<uint8_t>(Variant)});
		Write("metatable_" + std::to_string(Variant), {TagByte(EValueTag::MetaTable), static_cast<uint8_t>(Variant)});
	}
	std::fclose(File);
	return true;
}
