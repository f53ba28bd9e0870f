// Reads the PNG files a browser writes for a screenshot: 8 bits a sample, grey, RGB or RGBA, not
// interlaced. Enough to look at the pixels of a rendered page.
#pragma once

#include <zlib.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

struct FPNGImage
{
	uint32_t Width = 0;
	uint32_t Height = 0;
	// RGB, three bytes a pixel, row by row.
	std::vector<uint8_t> Pixels;

	struct FPixel
	{
		int R = 0;
		int G = 0;
		int B = 0;
	};

	FPixel At(uint32_t X, uint32_t Y) const
	{
		const size_t Offset = (static_cast<size_t>(Y) * Width + X) * 3;
		return {Pixels[Offset], Pixels[Offset + 1], Pixels[Offset + 2]};
	}
};

namespace PNGImage
{
	inline uint32_t ReadBigEndian(const std::string& Bytes, size_t Offset)
	{
		return (uint32_t(uint8_t(Bytes[Offset])) << 24) | (uint32_t(uint8_t(Bytes[Offset + 1])) << 16) | (uint32_t(uint8_t(Bytes[Offset + 2])) << 8)
			| uint32_t(uint8_t(Bytes[Offset + 3]));
	}

	inline int Paeth(int Left, int Up, int UpLeft)
	{
		const int Estimate = Left + Up - UpLeft;
		const int ToLeft = std::abs(Estimate - Left);
		const int ToUp = std::abs(Estimate - Up);
		const int ToUpLeft = std::abs(Estimate - UpLeft);
		return ToLeft <= ToUp && ToLeft <= ToUpLeft ? Left : (ToUp <= ToUpLeft ? Up : UpLeft);
	}

	// Decodes Bytes into Out; on failure OutError says why.
	inline bool Decode(const std::string& Bytes, FPNGImage& Out, std::string& OutError)
	{
		static const char Signature[] = "\x89PNG\r\n\x1A\n";
		if (Bytes.size() < 8 || Bytes.compare(0, 8, Signature, 8) != 0)
		{
			OutError = "not a PNG file";
			return false;
		}
		uint32_t Channels = 0;
		std::string Compressed;
		for (size_t Offset = 8; Offset + 12 <= Bytes.size();)
		{
			const uint32_t Length = ReadBigEndian(Bytes, Offset);
			const std::string Type = Bytes.substr(Offset + 4, 4);
			if (Offset + 12 + Length > Bytes.size())
			{
				OutError = "truncated chunk " + Type;
				return false;
			}
			const size_t Data = Offset + 8;
			if (Type == "IHDR")
			{
				Out.Width = ReadBigEndian(Bytes, Data);
				Out.Height = ReadBigEndian(Bytes, Data + 4);
				const int BitDepth = uint8_t(Bytes[Data + 8]);
				const int ColorType = uint8_t(Bytes[Data + 9]);
				const int Interlace = uint8_t(Bytes[Data + 12]);
				Channels = ColorType == 0 ? 1 : ColorType == 2 ? 3 : ColorType == 4 ? 2 : ColorType == 6 ? 4 : 0;
				if (BitDepth != 8 || Channels == 0 || Interlace != 0)
				{
					OutError = "unsupported PNG: bit depth " + std::to_string(BitDepth) + ", colour type " + std::to_string(ColorType) + ", interlace " + std::to_string(Interlace);
					return false;
				}
			}
			else if (Type == "IDAT")
			{
				Compressed.append(Bytes, Data, Length);
			}
			else if (Type == "IEND")
			{
				break;
			}
			Offset += 12 + Length;
		}
		if (Channels == 0 || Out.Width == 0 || Out.Height == 0)
		{
			OutError = "no image header";
			return false;
		}

		const size_t Stride = size_t(Out.Width) * Channels;
		std::vector<uint8_t> Raw((Stride + 1) * Out.Height);
		uLongf RawSize = static_cast<uLongf>(Raw.size());
		if (uncompress(Raw.data(), &RawSize, reinterpret_cast<const Bytef*>(Compressed.data()), static_cast<uLong>(Compressed.size())) != Z_OK || RawSize != Raw.size())
		{
			OutError = "the image data does not inflate to its size";
			return false;
		}

		std::vector<uint8_t> Previous(Stride, 0);
		std::vector<uint8_t> Row(Stride);
		Out.Pixels.resize(size_t(Out.Width) * Out.Height * 3);
		for (uint32_t Y = 0; Y < Out.Height; ++Y)
		{
			const uint8_t* Line = Raw.data() + Y * (Stride + 1);
			const int Filter = Line[0];
			for (size_t Index = 0; Index < Stride; ++Index)
			{
				const int Left = Index >= Channels ? Row[Index - Channels] : 0;
				const int Up = Previous[Index];
				const int UpLeft = Index >= Channels ? Previous[Index - Channels] : 0;
				int Predicted = 0;
				switch (Filter)
				{
				case 0: Predicted = 0; break;
				case 1: Predicted = Left; break;
				case 2: Predicted = Up; break;
				case 3: Predicted = (Left + Up) / 2; break;
				case 4: Predicted = Paeth(Left, Up, UpLeft); break;
				default:
					OutError = "unknown filter " + std::to_string(Filter);
					return false;
				}
				Row[Index] = static_cast<uint8_t>(Line[1 + Index] + Predicted);
			}
			for (uint32_t X = 0; X < Out.Width; ++X)
			{
				const uint8_t* Sample = Row.data() + X * Channels;
				uint8_t* Pixel = Out.Pixels.data() + (size_t(Y) * Out.Width + X) * 3;
				const bool bGrey = Channels < 3;
				Pixel[0] = Sample[0];
				Pixel[1] = bGrey ? Sample[0] : Sample[1];
				Pixel[2] = bGrey ? Sample[0] : Sample[2];
			}
			Previous.swap(Row);
		}
		return true;
	}
}
