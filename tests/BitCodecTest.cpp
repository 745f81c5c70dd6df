#include "Ixor/FastInfoset/BitStreamReader.h"
#include "Ixor/FastInfoset/BitStreamWriter.h"
#include "Ixor/FastInfoset/Decoder.h"
#include "Ixor/FastInfoset/Encoder.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Reading.h"
#include "TestSupport.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <functional>
#include <random>
#include <sstream>
#include <vector>


using namespace Ixor::FastInfoset;
using namespace TestSupport;
using testing::HasSubstr;


namespace {


std::string written(const std::function<void(BitStreamWriter&)>& write)
	/// The octets that write produces, padded with 0 bits.
{
	std::ostringstream out;
	{
		BitStreamWriter writer(out, false);
		write(writer);
		writer.complete();
	}
	return out.str();
}


void writeBits(BitStreamWriter& writer, const std::string& bits)
{
	for (char c: bits) if (c == '0' || c == '1') writer.write(c == '1');
}


} // namespace


//
// Bit streams
//
TEST(BitCodecTest, CompletePadsWithTheFillBit)
{
	struct { const char* bits; bool fill; const char* hex; } cases[] =
	{
		{"101",      false, "a0"},     // 101|0 0000
		{"101",      true,  "bf"},     // 101|1 1111
		{"",         true,  ""},       // nothing pending: nothing padded
		{"11110000", true,  "f0"},     // a whole octet needs no padding
		{"1",        true,  "ff"},
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(testing::Message() << c.bits << " fill=" << c.fill);
		std::ostringstream out;
		{
			BitStreamWriter writer(out, c.fill);
			writeBits(writer, c.bits);
		}   // the destructor completes
		EXPECT_EQ(c.hex, toHex(out.str()));
	}
}


TEST(BitCodecTest, WiderFieldsCrossOctetBoundaries)
{
	// 0x1234 on a boundary, then after one pending 1 bit: 1|0001 0010 0011 0100
	EXPECT_EQ("1234", toHex(written([](BitStreamWriter& w) { w.write(0x1234, 16); })));
	EXPECT_EQ("891a00", toHex(written([](BitStreamWriter& w) { w.write(true); w.write(0x1234, 16); w.write(false); })));
	EXPECT_EQ("0123456789abcdef", toHex(written([](BitStreamWriter& w) { w.write(0x0123456789ABCDEFul, 64); })));
	// 010 then 61 bits of all ones: 0101 1111 ... 1111 1|000 0000
	EXPECT_EQ("5fffffffffffffff80", toHex(written([](BitStreamWriter& w) { w.write(2u, 3); w.write(~0ul, 62); })));
	EXPECT_EQ("ff80", toHex(written([](BitStreamWriter& w) { w.writeBits(9, true); })));
}


TEST(BitCodecTest, WriterMatchesABitByBitModelAcrossItsBuffer)
{
	// Random fields and strings at random positions, over several buffers'
	// worth of output, against a plain list of bits.
	std::mt19937 random(20261121);
	std::vector<bool> model;
	std::ostringstream out;
	{
		BitStreamWriter writer(out, false);
		for (int i = 0; i < 20000; ++i)
		{
			switch (random() % 4)
			{
			case 0:
			case 1:
			{
				int n = 1 + random() % 32;
				unsigned int value = random();
				writer.write(value, n);
				for (int b = n - 1; b >= 0; --b) model.push_back((value >> b) & 1);
				break;
			}
			case 2:
			{
				int n = 33 + random() % 32;
				unsigned long value = (static_cast<unsigned long>(random()) << 32) | random();
				writer.write(value, n);
				for (int b = n - 1; b >= 0; --b) model.push_back((value >> b) & 1);
				break;
			}
			default:
			{
				std::string octets(random() % 3000, '\0');
				for (char& c: octets) c = static_cast<char>(random());
				writer.write(octets);
				for (unsigned char c: octets) for (int b = 7; b >= 0; --b) model.push_back((c >> b) & 1);
			}
			}
		}
	}
	std::string expected;
	for (std::size_t i = 0; i < model.size(); i += 8)
	{
		unsigned char octet = 0;
		for (std::size_t b = 0; b < 8; ++b) octet = static_cast<unsigned char>((octet << 1) | (i + b < model.size() && model[i + b]));
		expected += static_cast<char>(octet);
	}
	ASSERT_EQ(expected.size(), out.str().size());
	EXPECT_TRUE(expected == out.str());
}


TEST(BitCodecTest, ReaderReadsRandomFieldsOverMemoryAndStream)
{
	// Fields written at every offset and read back, so that they slide over
	// the stream reader's refill boundary.
	std::mt19937 random(7);
	std::vector<std::pair<int, unsigned long>> fields;
	for (int i = 0; i < 5000; ++i)
	{
		int n = 1 + random() % 64;
		unsigned long value = ((static_cast<unsigned long>(random()) << 32) | random()) & (n == 64 ? ~0ul : (1ul << n) - 1);
		fields.emplace_back(n, value);
	}
	const std::string octets = written([&](BitStreamWriter& w) { for (auto& f: fields) w.write(f.second, f.first); });
	for (Reading reading: READINGS)
	{
		SCOPED_TRACE(testing::Message() << reading);
		Input source(octets, reading);
		for (auto& f: fields)
		{
			unsigned long value = 0;
			ASSERT_TRUE(source.reader().read(value, f.first));
			ASSERT_EQ(f.second, value);
		}
	}
}


TEST(BitCodecTest, PeekLooksAheadWithoutConsuming)
{
	Input source(fromBits("101010 11 01 000000"), Reading::MEMORY);
	BitStreamReader& reader = source.reader();
	reader.skip(6);
	unsigned char c = 0;
	ASSERT_TRUE(reader.peek(c, 4));   // 11|01
	EXPECT_EQ(0xD, c);
	EXPECT_EQ(6, reader.bitPos());
	ASSERT_TRUE(reader.read(c, 4));
	EXPECT_EQ(0xD, c);
	EXPECT_EQ(2, reader.bitPos());
}


TEST(BitCodecTest, EndOfInputIsSeenOnlyWhenAReadRunsPastIt)
{
	BitStreamReader empty("", 0);
	EXPECT_TRUE(empty.eof());

	const char one[] = {'\x80'};
	BitStreamReader reader(one, 1);
	unsigned char c = 0;
	EXPECT_TRUE(reader.read(c, 8));
	EXPECT_FALSE(reader.eof());
	EXPECT_FALSE(reader.read(c, 1));
	EXPECT_TRUE(reader.eof());

	for (Reading reading: READINGS)
	{
		SCOPED_TRACE(testing::Message() << reading);
		Input source("\x12\x34", reading);
		unsigned int value = 0;
		EXPECT_FALSE(source.reader().read(value, 17));
		EXPECT_TRUE(source.reader().eof());
	}
}


TEST(BitCodecTest, LongStringsCrossTheStreamRefill)
{
	std::string text(1500, 'x');
	for (std::size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char>('a' + i % 26);
	for (int offset: {0, 3})
	{
		SCOPED_TRACE(offset);
		const std::string octets = written([&](BitStreamWriter& w) { w.writeBits(offset, false); w.write(text); });
		Input source(octets, Reading::WHOLE_STREAM);
		std::string read;
		source.reader().skip(offset);
		ASSERT_TRUE(source.reader().read(read, 1500));
		EXPECT_TRUE(read == text);
	}
	for (Reading reading: READINGS)
	{
		SCOPED_TRACE(testing::Message() << reading);
		Input source(text.substr(0, 1499), reading);
		std::string read;
		EXPECT_EQ("Unexpected end of stream while parsing octet string",
			messageOf<FISParseException>([&] { source.reader().read(read, 1500); }));
		EXPECT_LE(read.size(), 1499u);
	}
}


TEST(BitCodecTest, HugeLengthsReserveNothingUpFront)
{
	std::string read;
	Input source("abc", Reading::WHOLE_STREAM);
	EXPECT_THROW(source.reader().read(read, 4000000000ul), FISParseException);
	EXPECT_LT(read.capacity(), 1000000u);
}


TEST(BitCodecTest, StreamFailuresRaiseIOException)
{
	std::ostringstream out;
	out.setstate(std::ios::badbit);
	BitStreamWriter writer(out, false);
	writer.write(0xABCDu, 16);
	EXPECT_EQ("error while writing Fast Infoset document to stream", messageOf<Ixor::IOException>([&] { writer.complete(); }));

	std::istringstream in("abc");
	in.setstate(std::ios::badbit);
	BitStreamReader reader(in);
	unsigned char c = 0;
	EXPECT_EQ("error reading stream while parsing Fast Infoset document", messageOf<Ixor::IOException>([&] { reader.read(c, 8); }));
	out.clear();
}


//
// Integers
//
struct IntegerCase { int pos; unsigned int value; const char* bits; };

const IntegerCase INTEGER_CASES[] =
{
	// p = 1: '1111111' for 0, 7 bits, '10' + 13 bits, '110' + 20 bits
	{1, 0,       "1111111"},
	{1, 1,       "0000000"},
	{1, 64,      "0111111"},
	{1, 65,      "10 0000000000000"},
	{1, 8256,    "10 1111111111111"},
	{1, 8257,    "110 00000000000000000000"},
	{1, 1048576, "110 11111101111110111111"},   // 1048576 - 8257 = 0xFDFBF
	// p = 2: 6 bits, '100' + 11, '101' + 19, '11' + 8 zeros + 20
	{2, 1,       "000000"},
	{2, 32,      "011111"},
	{2, 33,      "100 00000000000"},
	{2, 2080,    "100 11111111111"},
	{2, 2081,    "101 0000000000000000000"},
	{2, 526368,  "101 1111111111111111111"},
	{2, 526369,  "11 00000000 00000000000000000000"},
	{2, 1048576, "11 00000000 01111111011111011111"},   // 1048576 - 526369 = 0x7F7DF
	// p = 3: 5 bits, '100' + 10, '101' + 18, '11' + 7 zeros + 20
	{3, 1,       "00000"},
	{3, 16,      "01111"},
	{3, 17,      "100 0000000000"},
	{3, 1040,    "100 1111111111"},
	{3, 1041,    "101 000000000000000000"},
	{3, 263184,  "101 111111111111111111"},
	{3, 263185,  "11 0000000 00000000000000000000"},
	{3, 1048576, "11 0000000 10111111101111101111"},   // 1048576 - 263185 = 0xBFBEF
	// p = 4 and 6: 8 bits of value - 1
	{4, 1,       "00000000"},
	{4, 256,     "11111111"},
	{6, 256,     "11111111"},
};


TEST(BitCodecTest, IntegersHaveTheirFormAtEachStartPosition)
{
	for (const IntegerCase& c: INTEGER_CASES)
	{
		SCOPED_TRACE(testing::Message() << "p=" << c.pos << " value=" << c.value);
		std::string prefix(c.pos, '1');
		const std::string octets = written([&](BitStreamWriter& w) { w.writeBits(c.pos, true); Encoder::integer(w, c.value); });
		EXPECT_EQ(toHex(fromBits(prefix + c.bits)), toHex(octets));
		for (Reading reading: READINGS)
		{
			SCOPED_TRACE(testing::Message() << reading);
			Input source(octets, reading);
			source.reader().skip(c.pos);
			unsigned int value = 0;
			Decoder::integer(source.reader(), value);
			EXPECT_EQ(c.value, value);
		}
	}
}


TEST(BitCodecTest, IntegersRoundTripForRandomValues)
{
	std::mt19937 random(42);
	for (int pos: {1, 2, 3, 4, 6})
	{
		std::vector<unsigned int> values;
		for (int i = 0; i < 3000; ++i)
		{
			unsigned int limit = pos >= 4 ? 256 : Encoder::MAXINT20;
			values.push_back(1 + random() % limit);
		}
		// Each value starts a fresh octet at the same position.
		const std::string octets = written([&](BitStreamWriter& w)
		{
			for (unsigned int v: values)
			{
				w.writeBits(pos, false);
				Encoder::integer(w, v);
				w.pad(false);
			}
		});
		for (Reading reading: READINGS)
		{
			SCOPED_TRACE(testing::Message() << reading);
			Input source(octets, reading);
			for (unsigned int v: values)
			{
				source.reader().skip(pos);
				unsigned int value = 0;
				Decoder::integer(source.reader(), value);
				ASSERT_EQ(v, value) << "p=" << pos;
				source.reader().skipToByteStart();
			}
		}
	}
}


TEST(BitCodecTest, IntegersRefuseWhatTheFormatForbids)
{
	struct { int pos; unsigned int value; const char* message; } cases[] =
	{
		{0, 1,       "Illegal bit position 0: Integers can never start there"},
		{0, 1048577, "Cannot encode integer value: too large, must be smaller than 2^20"},
		{1, 1048577, "Cannot encode integer value: too large, must be smaller than 2^20"},
		{2, 0,       "Value zero must start on the second bit of a byte"},
		{4, 257,     "Illegal bit position: Only Integers <= 256 can start at pos 4 or 6."},
		{6, 257,     "Illegal bit position: Only Integers <= 256 can start at pos 4 or 6."},
		{5, 1,       "Illegal bit position: No Integers are allowed to be written to pos 5 or 7."},
		{7, 1,       "Illegal bit position: No Integers are allowed to be written to pos 5 or 7."},
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(testing::Message() << "p=" << c.pos << " value=" << c.value);
		std::ostringstream out;
		BitStreamWriter writer(out, false);
		writer.writeBits(c.pos, false);
		EXPECT_EQ(c.message, messageOf<FISEncodingException>([&] { Encoder::integer(writer, c.value); }));
		EXPECT_EQ(c.pos, writer.bitPos());   // nothing was written
	}
	for (int pos: {0, 5, 7})
	{
		Input source(std::string(4, '\0'), Reading::MEMORY);
		source.reader().skip(pos);
		unsigned int value = 0;
		EXPECT_THAT(messageOf<FISEncodingException>([&] { Decoder::integer(source.reader(), value); }),
			HasSubstr(pos == 0 ? "Integers can never start there" : "to be read from pos 5 or 7"));
	}
}


TEST(BitCodecTest, PaddedIntegersOnAnOctetBoundary)
{
	struct { unsigned int value; const char* hex; } cases[] =
	{
		{0,    "7f"},       // 0|1111111
		{1,    "00"},
		{64,   "3f"},
		{65,   "4000"},     // 0|10 0 0000 0000 0000
		{8256, "5fff"},
		{8257, "600000"},
	};
	for (const auto& c: cases)
	{
		EXPECT_EQ(c.hex, toHex(written([&](BitStreamWriter& w) { Encoder::pad0ThenInteger(w, c.value); })));
	}
	// Off a boundary the padding bit moves the integer one position on.
	EXPECT_EQ(toHex(fromBits("1 0 00000")), toHex(written([](BitStreamWriter& w) { w.write(true); Encoder::pad0ThenInteger(w, 1); })));
	// Above 2^20 nothing is written, on a boundary as off one.
	for (int pos: {0, 1})
	{
		std::ostringstream out;
		BitStreamWriter writer(out, false);
		writer.writeBits(pos, false);
		EXPECT_EQ("Cannot encode integer value: too large, must be smaller than 2^20",
			messageOf<FISEncodingException>([&] { Encoder::pad0ThenInteger(writer, 1048577); }));
		EXPECT_EQ(pos, writer.bitPos());
	}
}


TEST(BitCodecTest, LenientIntegerPatternsAreKept)
{
	unsigned int value = 0;
	// p = 3: '11111' is read as the long form without looking further.
	Input lenient(fromBits("111 11111 0000 0000 0000 0000 0000 0001"), Reading::MEMORY);
	lenient.reader().skip(3);
	Decoder::integer(lenient.reader(), value);
	EXPECT_EQ(263186u, value);
	// p = 2: only '110000' starts the long form; values above 2^20 that the
	// lenient forms can spell are refused.
	struct { const char* bits; int skip; const char* message; } refused[] =
	{
		{"11 110001 00000000 00000000 00000000", 2, "Integer uses a reserved form"},
		{"1 1101111 11111111 11111111", 1, "Integer value larger than 2^20"},
		{"111 11111 1111 11111111 11111111", 3, "Integer value larger than 2^20"},
	};
	for (const auto& c: refused)
	{
		SCOPED_TRACE(c.bits);
		Input strict(fromBits(c.bits), Reading::MEMORY);
		strict.reader().skip(c.skip);
		EXPECT_EQ(c.message, messageOf<FISEncodingException>([&] { Decoder::integer(strict.reader(), value); }));
	}
}


//
// Lengths
//
TEST(BitCodecTest, StringLengthsUseThreeFormsAtEachPosition)
{
	struct { int pos; unsigned long length; int bits; } cases[] =
	{
		{1, 1, 7}, {1, 64, 7}, {1, 65, 15}, {1, 320, 15}, {1, 321, 39}, {1, 100000, 39},
		{4, 1, 4}, {4, 8, 4}, {4, 9, 12}, {4, 264, 12}, {4, 265, 36},
		{6, 1, 2}, {6, 2, 2}, {6, 3, 10}, {6, 258, 10}, {6, 259, 34},
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(testing::Message() << "p=" << c.pos << " length=" << c.length);
		const std::string octets = written([&](BitStreamWriter& w) { w.writeBits(c.pos, false); Encoder::nonEmptyStringLength(w, c.length); });
		EXPECT_EQ(static_cast<std::size_t>((c.pos + c.bits) / 8), octets.size());
		for (Reading reading: READINGS)
		{
			SCOPED_TRACE(testing::Message() << reading);
			Input source(octets, reading);
			source.reader().skip(c.pos);
			unsigned long length = 0;
			Decoder::nonEmptyStringLength(source.reader(), length);
			EXPECT_EQ(c.length, length);
		}
	}
	// Exact bits of the middle forms: '1000000' + 8 bits, '1000' + 8 bits, '10' + 8 bits
	EXPECT_EQ(toHex(fromBits("0 1000000 00000000")), toHex(written([](BitStreamWriter& w) { w.write(false); Encoder::nonEmptyStringLength(w, 65); })));
	EXPECT_EQ(toHex(fromBits("0000 1000 00000000")), toHex(written([](BitStreamWriter& w) { w.write(0u, 4); Encoder::nonEmptyStringLength(w, 9); })));
	EXPECT_EQ(toHex(fromBits("000000 11 00000000 00000000 00000000 00000001")),
		toHex(written([](BitStreamWriter& w) { w.write(0u, 6); Encoder::nonEmptyStringLength(w, 260); })));
}


TEST(BitCodecTest, OctetStringsRefuseEmptyTextAndBadPositions)
{
	std::ostringstream out;
	BitStreamWriter writer(out, false);
	writer.write(true);
	EXPECT_EQ("Encoder::nonEmptyOctetString cannot encode empty strings",
		messageOf<FISEncodingException>([&] { Encoder::nonEmptyOctetString(writer, ""); }));
	writer.write(true);
	EXPECT_EQ("illegal position for nonEmptyOctetString encoding",
		messageOf<FISEncodingException>([&] { Encoder::nonEmptyOctetString(writer, "a"); }));
	Input source("\xff\xff", Reading::MEMORY);
	source.reader().skip(2);
	unsigned long length = 0;
	EXPECT_EQ("illegal position for nonEmptyOctetString encoding",
		messageOf<FISEncodingException>([&] { Decoder::nonEmptyStringLength(source.reader(), length); }));
}


TEST(BitCodecTest, SequenceLengthsReadBackAsWritten)
{
	struct { unsigned int length; const char* hex; } cases[] =
	{
		{1,       "00"},
		{128,     "7f"},
		{129,     "800000"},   // 1000 + 20 bits of length - 129
		{200,     "800047"},
		{1048576, "8fff7f"},
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(c.length);
		const std::string octets = written([&](BitStreamWriter& w) { Encoder::lengthOfSequence(w, c.length); });
		EXPECT_EQ(c.hex, toHex(octets));
		Input source(octets, Reading::MEMORY);
		unsigned int length = 0;
		Decoder::lengthOfSequence(source.reader(), length);
		EXPECT_EQ(c.length, length);
	}

	std::ostringstream out;
	BitStreamWriter writer(out, false);
	EXPECT_EQ("Illegal value zero for lengthOfSequence", messageOf<FISEncodingException>([&] { Encoder::lengthOfSequence(writer, 0); }));
	EXPECT_EQ("Illegal value for lengthOfSequence: larger than 2^20",
		messageOf<FISEncodingException>([&] { Encoder::lengthOfSequence(writer, 1048577); }));
	writer.write(true);
	EXPECT_EQ("Illegal startposition for a lengthOfSequence value",
		messageOf<FISEncodingException>([&] { Encoder::lengthOfSequence(writer, 1); }));
}


TEST(BitCodecTest, NameSurrogatesMarkAbsentPartsWithAllBitsSet)
{
	// 000000|1 1|0 0000001 (prefix 2)|0 0000010 (namespace 3)|0 0000011 (local 4)
	Input both(fromBits("000000 11 00000001 00000010 00000011"), Reading::MEMORY);
	both.reader().skip(6);
	EXPECT_EQ(QualifiedNameEntry(2, 3, 4), Decoder::nameSurrogate(both.reader()));

	Input localOnly(fromBits("000000 00 00000100"), Reading::MEMORY);
	localOnly.reader().skip(6);
	EXPECT_EQ(QualifiedNameEntry(0xFFFFFFFF, 0xFFFFFFFF, 5), Decoder::nameSurrogate(localOnly.reader()));

	Input misplaced(fromBits("00000000"), Reading::MEMORY);
	EXPECT_EQ("Illegal startposition for a nameSurrogate value",
		messageOf<FISEncodingException>([&] { Decoder::nameSurrogate(misplaced.reader()); }));
}


//
// Header
//
TEST(BitCodecTest, HeadersAreAcceptedOrRefused)
{
	struct { std::string octets; const char* declaration; const char* message; } cases[] =
	{
		{fromHex("e0 00 00 01 00"),                 "",                          ""},
		{"<?xml encoding='finf'?>" + fromHex("e0 00 00 01 00"), "<?xml encoding='finf'?>", ""},
		{"<?xml version='1.0' encoding='finf' standalone='no'?>" + fromHex("e0 00 00 01 00"),
			"<?xml version='1.0' encoding='finf' standalone='no'?>", ""},
		{fromHex("e0 00 00 02 00"),                 "", "Unsupported Fast Infoset document version"},
		{fromHex("e0 01 00 01 00"),                 "", "Not a valid Fast Infoset document (invalid header)"},
		{"<root/>",                                 "", "Not a valid Fast Infoset document (invalid header)"},
		{"<?xml encoding='finf'",                  "", "Not a valid Fast Infoset document (invalid header)"},
		{fromHex("e0 00"),                          "", "Not a valid Fast Infoset document (invalid header)"},
		{"",                                        "", "Not a valid Fast Infoset document (invalid header)"},
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(toHex(c.octets));
		for (Reading reading: READINGS)
		{
			SCOPED_TRACE(testing::Message() << reading);
			Input source(c.octets, reading);
			std::string declaration;
			EXPECT_EQ(*c.message ? c.message : "no exception",
				messageOf<FISException>([&] { Decoder::documentPreHeader(source.reader(), declaration); }));
			if (!*c.message)
			{
				EXPECT_EQ(c.declaration, declaration);
				EXPECT_EQ(1, source.reader().bitPos());
			}
		}
	}
	EXPECT_EQ("<?xml encoding='finf'?>" + fromHex("e0 00 00 01 00"),
		written([](BitStreamWriter& w) { Encoder::documentPreHeader(w, true); }));
}


TEST(BitCodecTest, EndOfInputRaisesTheMessageOfEachRead)
{
	// Each input is a valid field cut short.
	struct { const char* what; int pos; std::string octets; std::function<void(BitStreamReader&)> read; const char* message; } cases[] =
	{
		{"integer p=1", 1, fromBits("0 10 00000"), [](BitStreamReader& r) { unsigned int v; Decoder::integer(r, v); },
			"Unexpected end of stream while reading integer"},
		{"integer p=2", 2, fromBits("00 110000"), [](BitStreamReader& r) { unsigned int v; Decoder::integer(r, v); },
			"Unexpected end of stream while reading integer"},
		{"integer p=4", 4, fromBits("0000"), [](BitStreamReader& r) { unsigned int v; Decoder::integer(r, v); },
			"Unexpected end of stream while reading integer"},
		{"string length", 1, fromBits("0 1100000 0000"), [](BitStreamReader& r) { unsigned long v; Decoder::nonEmptyStringLength(r, v); },
			"Unexpected end of stream while parsing string length"},
		{"octet string", 1, fromBits("0 0000011") + "ab", [](BitStreamReader& r) { std::string s; Decoder::nonEmptyOctetString(r, s); },
			"Unexpected end of stream while parsing octet string"},
		{"sequence length", 0, fromBits("1000"), [](BitStreamReader& r) { unsigned int v; Decoder::lengthOfSequence(r, v); },
			"Unexpected end of stream while parsing sequence length"},
		{"sequence length, empty", 0, "", [](BitStreamReader& r) { unsigned int v; Decoder::lengthOfSequence(r, v); },
			"Unexpected end of stream while parsing sequence length"},
		{"surrogate", 6, "", [](BitStreamReader& r) { Decoder::nameSurrogate(r); },
			"Unexpected end of stream while reading surrogate"},
		{"surrogate index", 6, fromBits("000000 10"), [](BitStreamReader& r) { Decoder::nameSurrogate(r); },
			"Unexpected end of stream while reading integer"},
		{"additional data", 0, fromBits("00000001 0 0000011 ab"), [](BitStreamReader& r) { Decoder::skipAdditionalData(r); },
			"Unexpected end of stream while parsing octet string"},
	};
	for (const auto& c: cases)
	{
		for (Reading reading: READINGS)
		{
			SCOPED_TRACE(testing::Message() << c.what << " " << reading);
			Input source(c.octets, reading);
			source.reader().skip(c.pos);
			EXPECT_EQ(c.message, messageOf<FISParseException>([&] { c.read(source.reader()); }));
		}
	}
}
