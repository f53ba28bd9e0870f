#include "DMXAttribute.h"

#include "DMXProtocolSettings.h"

#include <array>

namespace
{
	// CRC-32 (reflected polynomial 0xEDB88320), as the engine's memory CRC.
	uint32 CalculateMemCrc32(const void* Data, size_t Length)
	{
		static const auto Table = []()
		{
			std::array<uint32, 256> Result{};
			for (uint32 Index = 0; Index < 256; ++Index)
			{
				uint32 Value = Index;
				for (int32 Bit = 0; Bit < 8; ++Bit)
				{
					Value = (Value & 1u) ? (0xEDB88320u ^ (Value >> 1)) : (Value >> 1);
				}
				Result[Index] = Value;
			}
			return Result;
		}();

		uint32 Crc = ~0u;
		const uint8* Bytes = static_cast<const uint8*>(Data);
		for (size_t Index = 0; Index < Length; ++Index)
		{
			Crc = Table[(Crc ^ Bytes[Index]) & 0xFFu] ^ (Crc >> 8);
		}
		return ~Crc;
	}
}

FDMXAttributeName::FDMXAttributeName()
	: Name(TEXT("Color"))
{
}

FDMXAttributeName::FDMXAttributeName(const FDMXAttribute& InAttribute)
	: Name(InAttribute.Name)
{
}

FDMXAttributeName::FDMXAttributeName(const FName& NameAttribute)
	: Name(NameAttribute)
{
}

void FDMXAttributeName::SetFromName(const FName& InName)
{
	Name = InName;
}

TArray<FName> FDMXAttributeName::GetPredefinedValues()
{
	TArray<FName> Result;
	for (const FDMXAttribute& Attribute : GetDefault<UDMXProtocolSettings>()->Attributes)
	{
		Result.Add(Attribute.Name);
	}
	return Result;
}

bool operator==(const FDMXAttributeName& A, const FDMXAttributeName& B)
{
	return A.Name.IsEqual(B.Name);
}

bool operator!=(const FDMXAttributeName& A, const FDMXAttributeName& B)
{
	return !A.Name.IsEqual(B.Name);
}

uint32 GetTypeHash(const FDMXAttributeName& DMXAttributeName)
{
	const FString Text = DMXAttributeName.Name.ToString();
	return CalculateMemCrc32(*Text, static_cast<size_t>(Text.Len()) * sizeof(TCHAR));
}
