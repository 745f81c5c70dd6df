#include "Ixor/FastInfoset/BitStreamReader.h"
#include "Ixor/FastInfoset/BitStreamWriter.h"
#include "Ixor/FastInfoset/BoolEncoding.h"
#include "Ixor/FastInfoset/CDataEncoding.h"
#include "Ixor/FastInfoset/DWordEncoding.h"
#include "Ixor/FastInfoset/DecodingAlgorithm.h"
#include "Ixor/FastInfoset/DoubleEncoding.h"
#include "Ixor/FastInfoset/EncodingAlgorithm.h"
#include "Ixor/FastInfoset/FISContentHandler.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FloatEncoding.h"
#include "Ixor/FastInfoset/HexEncoding.h"
#include "Ixor/FastInfoset/IntEncoding.h"
#include "Ixor/FastInfoset/LongEncoding.h"
#include "Ixor/FastInfoset/NullEncoding.h"
#include "Ixor/FastInfoset/NullRefEncoding.h"
#include "Ixor/FastInfoset/ShortEncoding.h"
#include "Ixor/FastInfoset/UUIDEncoding.h"
#include "Poco/NumberFormatter.h"
#include "Poco/SAX/Attributes.h"
#include "Poco/SAX/DefaultHandler.h"
#include "NullHandler.h"
#include "Reading.h"
#include "TestSupport.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <climits>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <sstream>
#include <vector>


using namespace Ixor::FastInfoset;
using namespace TestSupport;
using testing::HasSubstr;


namespace {


const EncodingAlgorithm ENCODINGS;
const DecodingAlgorithm DECODINGS;


template <class E>
bool isA(const Encoding& value)
{
	return dynamic_cast<const E*>(&value) != nullptr;
}


struct Algorithm
	/// The per-class functions that the tables do not reach.
{
	const char* name;
	CheckMethod check;
	void (*decodeText)(BitStreamReader&, std::string&);
	bool (*isOfClass)(const Encoding&);
};


const Algorithm ALGORITHMS[] =
{
	{"",               nullptr,               nullptr,                nullptr},
	{"HexEncoding",    &HexEncoding::check,    &HexEncoding::decode,    &isA<HexEncoding>},
	{"DWordEncoding",  &DWordEncoding::check,  &DWordEncoding::decode,  &isA<DWordEncoding>},
	{"ShortEncoding",  &ShortEncoding::check,  &ShortEncoding::decode,  &isA<ShortEncoding>},
	{"IntEncoding",    &IntEncoding::check,    &IntEncoding::decode,    &isA<IntEncoding>},
	{"LongEncoding",   &LongEncoding::check,   &LongEncoding::decode,   &isA<LongEncoding>},
	{"BoolEncoding",   &BoolEncoding::check,   &BoolEncoding::decode,   &isA<BoolEncoding>},
	{"FloatEncoding",  &FloatEncoding::check,  &FloatEncoding::decode,  &isA<FloatEncoding>},
	{"DoubleEncoding", &DoubleEncoding::check, &DoubleEncoding::decode, &isA<DoubleEncoding>},
	{"UUIDEncoding",   &UUIDEncoding::check,   &UUIDEncoding::decode,   &isA<UUIDEncoding>},
	{"CDataEncoding",  &CDataEncoding::check,  &CDataEncoding::decode,  &isA<CDataEncoding>},
};


std::string written(const std::function<void(BitStreamWriter&)>& write)
	/// The octets of one value string written after a 0 bit, as a character
	/// chunk would place it: the length then starts on the second bit.
{
	std::ostringstream out;
	{
		BitStreamWriter writer(out, false);
		writer.write(false);
		write(writer);
		writer.complete();
	}
	return out.str();
}


struct Source
	/// The octets after prefix filler octets, read in one of the ways; the
	/// reader stands on the second bit of the octets.
{
	Source(const std::string& octets, Reading reading, std::size_t prefix = 0):
		input(std::string(prefix, 'x') + octets, reading)
	{
		std::string filler;
		reader().read(filler, prefix);
		reader().skip(1);
	}

	BitStreamReader& reader() { return input.reader(); }

	Input input;
};


class TypedRecorder: public NullHandler
	/// Records text and typed values as one line each: "int 5", "binary
	/// 01ab", "characters x", and minus zero with its sign.
{
public:
	std::string log() const
	{
		std::string joined;
		for (const std::string& line: lines) joined += (joined.empty() ? "" : "|") + line;
		return joined;
	}

	void characters(const Ixor::XML::XMLChar ch[], int start, int length) override { lines.push_back("characters " + std::string(ch + start, length)); }

	void binaryData(const char* data, std::size_t length) override { lines.push_back("binary " + toHex(std::string(data, length))); }
	void encodedData(short value) override { lines.push_back("short " + Ixor::NumberFormatter::format(value)); }
	void encodedData(int value) override { lines.push_back("int " + Ixor::NumberFormatter::format(value)); }
	void encodedData(long value) override { lines.push_back("long " + Ixor::NumberFormatter::format(value)); }
	void encodedData(bool value) override { lines.push_back(value ? "bool true" : "bool false"); }
	void encodedData(float value) override { lines.push_back("float " + signOfZero(value) + Ixor::NumberFormatter::format(value)); }
	void encodedData(double value) override { lines.push_back("double " + signOfZero(value) + Ixor::NumberFormatter::format(value)); }
	void encodedData(const Ixor::UUID& value) override { lines.push_back("uuid " + value.toString()); }

	std::vector<std::string> lines;

private:
	static std::string signOfZero(double value)
		/// The formatter drops the sign of minus zero.
	{
		return value == 0 && std::signbit(value) ? "-" : "";
	}
};


class TextRecorder: public Ixor::XML::DefaultHandler
	/// A plain SAX handler that keeps the characters it is given.
{
public:
	void characters(const Ixor::XML::XMLChar ch[], int start, int length) override
	{
		text.append(ch + start, length);
		++calls;
	}

	std::string text;
	int calls = 0;
};


std::string textOf(const Encoding& encoding)
	/// What a plain SAX handler receives.
{
	TextRecorder recorder;
	encoding.handle(static_cast<Ixor::XML::ContentHandler*>(&recorder));
	EXPECT_EQ(1, recorder.calls);
	return recorder.text;
}


std::string typedOf(const Encoding& encoding)
	/// What a typed-data handler receives.
{
	TypedRecorder recorder;
	encoding.handle(&recorder);
	return recorder.log();
}


} // namespace


//
// Text, values and octets
//
struct RoundTripCase
{
	unsigned int index;
	const char* text;
	const char* octets;    // the length (after a 0 bit) and the value octets
	Ixor::Int32 check;
	const char* textBack;
	const char* typed;
};


const RoundTripCase ROUND_TRIP_CASES[] =
{
	{3, "0",                    "01 0000",                 2, "0", "short 0"},
	{3, "32767 -32768 1",       "05 7fff 8000 0001",       6, "32767 -32768 1", "short 32767|short -32768|short 1"},
	{4, "1 2 3",                "0b 00000001 00000002 00000003", 12, "1 2 3", "int 1|int 2|int 3"},
	{4, "2147483647 -2147483648", "07 7fffffff 80000000", 8, "2147483647 -2147483648", "int 2147483647|int -2147483648"},
	{5, "9223372036854775807 -9223372036854775808", "0f 7fffffffffffffff 8000000000000000", 16,
		"9223372036854775807 -9223372036854775808", "long 9223372036854775807|long -9223372036854775808"},
	{5, "2147483648",           "07 0000000080000000",     8, "2147483648", "long 2147483648"},
	{5, "-5159102565782383544", "07 b8672f8ceebc1448",     8, "-5159102565782383544", "long -5159102565782383544"},
	// booleans: 4-bit unused count, the bits, 0 padding
	{6, "true false true",      "00 1a",                   1, "true false true", "bool true|bool false|bool true"},   // 0001|101|0
	{6, "true true true true true", "01 7f 80",            1, "true true true true true",                              // 0111|1111 1|000 0000
		"bool true|bool true|bool true|bool true|bool true"},
	{6, "false",                "00 30",                   1, "false", "bool false"},                                  // 0011|0|000
	{6, "true true true true true true true true true true true true", "01 0f ff", 2,                                  // 0000|1111 1111 1111
		"true true true true true true true true true true true true",
		"bool true|bool true|bool true|bool true|bool true|bool true|bool true|bool true|bool true|bool true|bool true|bool true"},
	{7, "1.5 1e-30",            "07 3fc00000 0da24260",    8, "1.5 1e-30", "float 1.5|float 1e-30"},
	// the float range bounds come back in the shorter single-precision form
	{7, "3.4028234663852886e+38", "03 7f7fffff",           4, "3.4028235e+38", "float 3.4028235e+38"},
	{7, "1.1754943508222875e-38", "03 00800000",           4, "1.1754944e-38", "float 1.1754944e-38"},
	{8, "1.5 -1.5 0",           "17 3ff8000000000000 bff8000000000000 0000000000000000", 24, "1.5 -1.5 0",
		"double 1.5|double -1.5|double 0"},
	{8, "1.7976931348623157e+308 5e-324", "0f 7fefffffffffffff 0000000000000001", 16, "1.7976931348623157e+308 5e-324",
		"double 1.7976931348623157e+308|double 5e-324"},
	// the values without digits, and minus zero, in their XML Schema forms
	{8, "NaN INF -INF -0 0",    "27 7ff8000000000000 7ff0000000000000 fff0000000000000 8000000000000000 0000000000000000", 40,
		"NaN INF -INF -0 0", "double nan|double inf|double -inf|double -0|double 0"},
	{7, "NaN INF -INF",         "0b 7fc00000 7f800000 ff800000", 12, "NaN INF -INF", "float nan|float inf|float -inf"},
	{9, "6ba7b810-9dad-11d1-80b4-00c04fd430c8", "0f 6ba7b8109dad11d180b400c04fd430c8", 16,
		"6BA7B810-9DAD-11D1-80B4-00C04FD430C8", "uuid 6ba7b810-9dad-11d1-80b4-00c04fd430c8"},
	{9, "6BA7B810-9DAD-11D1-80B4-00C04FD430C8 00000000-0000-0000-0000-000000000001",
		"1f 6ba7b8109dad11d180b400c04fd430c8 00000000000000000000000000000001", 32,
		"6BA7B810-9DAD-11D1-80B4-00C04FD430C8 00000000-0000-0000-0000-000000000001",
		"uuid 6ba7b810-9dad-11d1-80b4-00c04fd430c8|uuid 00000000-0000-0000-0000-000000000001"},
	{1, "01ab",                 "01 01ab",                 2, "01AB", "binary 01ab"},
	{2, "AAEC",                 "02 000102",               3, "AAEC", "binary 000102"},
	{2, "AQ==",                 "00 01",                   1, "AQ==", "binary 01"},
	{10, "a]]>b",               "04 615d5d3e62",           5, "a]]>b", "characters a]]>b"},
};


TEST(EncodingTest, TextValuesOctetsRoundTrip)
{
	for (const RoundTripCase& c: ROUND_TRIP_CASES)
	{
		SCOPED_TRACE(testing::Message() << c.index << " '" << c.text << "'");
		const Algorithm& algorithm = ALGORITHMS[c.index];
		EXPECT_EQ(c.check, algorithm.check(c.text));
		const std::string octets = written([&](BitStreamWriter& w) { ENCODINGS.encode(c.index, w, c.text); });
		EXPECT_EQ(toHex(fromHex(c.octets)), toHex(octets));

		for (Reading reading: READINGS)
		{
			// Slide the string across the stream reader's refill boundary.
			for (std::size_t prefix: {0, 1020, 1023})
			{
				SCOPED_TRACE(testing::Message() << reading << " prefix=" << prefix);
				Source typed(octets, reading, prefix);
				Encoding::Ptr pValue = DECODINGS.read(static_cast<int>(c.index), typed.reader());
				EXPECT_EQ(prefix + octets.size(), typed.reader().octetsConsumed());
				EXPECT_EQ(c.index, pValue->type());
				EXPECT_EQ(c.textBack, textOf(*pValue));
				EXPECT_EQ(c.typed, typedOf(*pValue));

				Source text(octets, reading, prefix);
				std::string back = "stale";
				algorithm.decodeText(text.reader(), back);
				EXPECT_EQ(c.textBack, back);
				EXPECT_EQ(prefix + octets.size(), text.reader().octetsConsumed());
			}
		}
	}
}


template <class E, class T>
void checkRandomValues(const std::vector<T>& values, bool textRoundTrip = true)
	/// Values -> octets -> values, and values -> text -> values.
{
	Ixor::AutoPtr<E> pValue(new E(values));
	const std::string octets = written([&](BitStreamWriter& w) { pValue->write(w); });
	for (Reading reading: READINGS)
	{
		SCOPED_TRACE(testing::Message() << reading);
		Source source(octets, reading);
		std::vector<T> back;
		E::decode(source.reader(), back);
		ASSERT_EQ(values.size(), back.size());
		EXPECT_EQ(0, std::memcmp(values.data(), back.data(), values.size()*sizeof(T)));
	}
	if (!textRoundTrip) return;
	pValue->createContent();
	std::vector<T> parsed;
	E::parse(pValue->content(), parsed);
	EXPECT_TRUE(values == parsed);
}


TEST(EncodingTest, RandomValuesRoundTrip)
{
	// Long lists cross the stream reader's buffer, so they are read through
	// the copying path as well as in place.
	std::mt19937 random(20250611);
	std::vector<short> shorts;
	std::vector<int> ints;
	std::vector<long> longs;
	std::vector<float> floats;
	std::vector<float> anyFloats;
	std::vector<double> doubles;
	std::vector<bool> bools;
	std::uniform_real_distribution<double> exponent(-37.0, 38.0);
	for (int i = 0; i < 2000; ++i)
	{
		const Ixor::UInt64 bits = (Ixor::UInt64(random()) << 32) | random();
		shorts.push_back(static_cast<short>(bits));
		ints.push_back(static_cast<int>(bits));
		longs.push_back(static_cast<long>(bits));
		floats.push_back(static_cast<float>(std::pow(10.0, exponent(random)) * (1.0 + (bits % 1000) / 1000.0)));
		float f;
		Ixor::UInt32 fbits = static_cast<Ixor::UInt32>(bits);
		std::memcpy(&f, &fbits, sizeof f);
		if (f == f) anyFloats.push_back(f);   // NaN has no stable comparison
		double d;
		std::memcpy(&d, &bits, sizeof d);
		if (d == d) doubles.push_back(d);
		bools.push_back(bits & 1);
	}
	checkRandomValues<ShortEncoding>(shorts);
	checkRandomValues<IntEncoding>(ints);
	checkRandomValues<LongEncoding>(longs);
	// Float text is written in the single-precision form but read back
	// through the double one, which often differs (see below).
	checkRandomValues<FloatEncoding>(floats, false);
	checkRandomValues<DoubleEncoding>(doubles);

	Ixor::AutoPtr<FloatEncoding> pFloats(new FloatEncoding(anyFloats));
	const std::string octets = written([&](BitStreamWriter& w) { pFloats->write(w); });
	Source source(octets, Reading::WHOLE_STREAM);
	std::vector<float> back;
	FloatEncoding::decode(source.reader(), back);
	ASSERT_EQ(anyFloats.size(), back.size());
	EXPECT_EQ(0, std::memcmp(anyFloats.data(), back.data(), back.size()*sizeof(float)));

	for (std::size_t count: {1, 3, 4, 5, 12, 13, 2000})
	{
		SCOPED_TRACE(count);
		std::vector<bool> some(bools.begin(), bools.begin() + count);
		Ixor::AutoPtr<BoolEncoding> pValue(new BoolEncoding(some));
		const std::string boolOctets = written([&](BitStreamWriter& w) { pValue->write(w); });
		Source boolSource(boolOctets, Reading::WHOLE_STREAM);
		std::vector<bool> boolBack;
		BoolEncoding::decode(boolSource.reader(), boolBack);
		EXPECT_TRUE(some == boolBack);
		EXPECT_EQ(boolOctets.size(), boolSource.reader().octetsConsumed());
	}
}


TEST(EncodingTest, FloatValuesThatTheTextFormRefusesAreWritten)
{
	// Zero and negative floats are typed values only: their text is refused.
	Ixor::AutoPtr<FloatEncoding> pValue(new FloatEncoding(std::vector<float>{0.0f, -1.5f, -0.0f}));
	EXPECT_EQ(toHex(fromHex("0b 00000000 bfc00000 80000000")), toHex(written([&](BitStreamWriter& w) { pValue->write(w); })));
	pValue->createContent();
	EXPECT_EQ("0 -1.5 -0", pValue->content());
	EXPECT_EQ(0, FloatEncoding::check("0 -1.5 -0"));
	EXPECT_EQ(24, DoubleEncoding::check("0 -1.5 -0"));

	// The text of a float uses the single-precision form, which the float
	// parser (testing against the double form) need not accept again.
	Ixor::AutoPtr<FloatEncoding> pLarge(new FloatEncoding(3275073.5f));
	pLarge->createContent();
	EXPECT_EQ("3.2750735e+6", pLarge->content());
	EXPECT_EQ(0, FloatEncoding::check("3.2750735e+6"));
	EXPECT_EQ(4, FloatEncoding::check("3275073.5"));
}


TEST(EncodingTest, EveryNaNReadsAsNaN)
{
	// Negative, signalling and payload-carrying NaNs as other writers may
	// send them.
	struct { unsigned int index; const char* octets; } cases[] =
	{
		{7, "0b ffc00000 7f800001 7fc12345"},
		{8, "17 fff8000000000000 7ff0000000000001 7ff8000000012345"},
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(c.octets);
		Source source(fromHex(c.octets), Reading::MEMORY);
		std::string text;
		ALGORITHMS[c.index].decodeText(source.reader(), text);
		EXPECT_EQ("NaN NaN NaN", text);
	}
}


struct RefusedCase { unsigned int index; const char* text; Ixor::Int32 check; const char* message; };

const RefusedCase REFUSED_CASES[] =
{
	{3, "1  2", 0, "Illegal value string for ShortEncoding"},     // two spaces
	{3, " 1",   0, "Illegal value string for ShortEncoding"},     // leading space
	{3, "1 ",   0, "Illegal value string for ShortEncoding"},     // trailing space
	{3, "+1",   0, "Illegal value string for ShortEncoding"},
	{3, "01",   0, "Illegal value string for ShortEncoding"},
	{3, "-0",   0, "Illegal value string for ShortEncoding"},
	{3, "1\t2", 0, "Illegal value string for ShortEncoding"},
	{3, "32768", 0, "Illegal value string for ShortEncoding"},
	{3, "-32769", 0, "Illegal value string for ShortEncoding"},
	{3, "",     0, "Illegal (empty) data for ShortEncoding"},
	{4, "1  2", 0, "Illegal value string for IntEncoding"},
	{4, " 1",   0, "Illegal value string for IntEncoding"},
	{4, "+1",   0, "Illegal value string for IntEncoding"},
	{4, "01",   0, "Illegal value string for IntEncoding"},
	{4, "-0",   0, "Illegal value string for IntEncoding"},
	{4, "1\t2", 0, "Illegal value string for IntEncoding"},
	{4, "1,000", 0, "Illegal value string for IntEncoding"},
	{4, "2147483648", 0, "Illegal value string for IntEncoding"},
	{4, "",     0, "Illegal (empty) data for IntEncoding"},
	{5, "1  2", 0, "Illegal value string for LongEncoding"},
	{5, " 1",   0, "Illegal value string for LongEncoding"},
	{5, "+1",   0, "Illegal value string for LongEncoding"},
	{5, "01",   0, "Illegal value string for LongEncoding"},
	{5, "-0",   0, "Illegal value string for LongEncoding"},
	{5, "1\t2", 0, "Illegal value string for LongEncoding"},
	{5, "9223372036854775808", 0, "Illegal value string for LongEncoding"},
	{5, "",     0, "Illegal (empty) data for LongEncoding"},
	{6, "True", 0, "Illegal value string for BoolEncoding"},
	{6, "true  false", 0, "Illegal value string for BoolEncoding"},
	{6, "1",    0, "Illegal value string for BoolEncoding"},
	{6, "",     0, "Illegal (empty) data for BoolEncoding"},
	{7, "0",    0, "Illegal value string for FloatEncoding"},
	{7, "-1.5", 0, "Illegal value string for FloatEncoding"},
	{7, "1e-39", 0, "Illegal value string for FloatEncoding"},            // subnormal
	{7, "3.4028235e+38", 0, "Illegal value string for FloatEncoding"},    // just above the largest float
	{7, "1.50", 0, "Illegal value string for FloatEncoding"},
	{7, "-0",   0, "Illegal value string for FloatEncoding"},
	{7, "nan",  0, "Illegal value string for FloatEncoding"},
	{7, "",     0, "Illegal (empty) data for FloatEncoding"},
	{8, "1.50", 0, "Illegal value string for DoubleEncoding"},
	{8, "nan",  0, "Illegal value string for DoubleEncoding"},
	{8, "inf",  0, "Illegal value string for DoubleEncoding"},
	{8, "+INF", 0, "Illegal value string for DoubleEncoding"},
	{8, "-NaN", 0, "Illegal value string for DoubleEncoding"},
	{8, "-0.0", 0, "Illegal value string for DoubleEncoding"},
	{8, "1e400", 0, "Illegal value string for DoubleEncoding"},
	{8, "1e5",  0, "Illegal value string for DoubleEncoding"},
	{8, "1.5  2", 0, "Illegal value string for DoubleEncoding"},
	{8, "",     0, "Illegal (empty) data for DoubleEncoding"},
	{9, "6ba7b810-9dad-11d1-80b4", 0, "Illegal value string for UUIDEncoding"},
	{9, "6ba7b810-9dad-11d1-80b4-00c04fd430c8  6ba7b810-9dad-11d1-80b4-00c04fd430c8", 0, "Illegal value string for UUIDEncoding"},
	{9, "",     0, "Illegal (empty) data for UUIDEncoding"},
	{1, "0G",   -1, "Invalid hex-encoded data"},
	{1, "01A",  -1, "Invalid hex-encoded data"},                           // a missing last digit
	{1, "",     -1, "Zero-length data for hex encoding"},
	{1, "  ",   0, "Zero-length data for hex encoding"},                   // white space yields no octets
	{2, "AA*C", -1, "Invalid base64-encoded data"},
	{2, "AAE",  -1, "Invalid base64-encoded data"},
	{2, "",     -1, "Zero-length data for dword encoding"},
	{10, "",    0, "Illegal empty string for CDataEncoding"},
};


TEST(EncodingTest, RefusedTexts)
{
	for (const RefusedCase& c: REFUSED_CASES)
	{
		SCOPED_TRACE(testing::Message() << c.index << " '" << c.text << "'");
		EXPECT_EQ(c.check, ALGORITHMS[c.index].check(c.text));
		EXPECT_EQ(c.message, messageOf<FISEncodingException>([&]
		{
			written([&](BitStreamWriter& w) { ENCODINGS.encode(c.index, w, c.text); });
		}));
	}
}


TEST(EncodingTest, ConstructorsRefuseEmptyData)
{
	const std::vector<std::pair<std::function<Encoding*()>, const char*>> cases =
	{
		{[] { return new ShortEncoding(std::vector<short>()); },       "Illegal (empty) data for ShortEncoding"},
		{[] { return new IntEncoding(std::vector<int>()); },           "Illegal (empty) data for IntEncoding"},
		{[] { return new LongEncoding(std::vector<long>()); },         "Illegal (empty) data for LongEncoding"},
		{[] { return new BoolEncoding(std::vector<bool>()); },         "Illegal (empty) data for BoolEncoding"},
		{[] { return new FloatEncoding(std::vector<float>()); },       "Illegal (empty) data for FloatEncoding"},
		{[] { return new DoubleEncoding(std::vector<double>()); },     "Illegal (empty) data for DoubleEncoding"},
		{[] { return new UUIDEncoding(std::vector<Ixor::UUID>()); },   "Illegal (empty) data for UUIDEncoding"},
		{[] { return new HexEncoding("ab", 0); },                      "Zero-length data for hex encoding"},
		{[] { return new DWordEncoding("ab", 0); },                    "Zero-length data for dword encoding"},
		{[] { return new NullEncoding(std::string()); },               "Illegal empty string for NullEncoding"},
		{[] { return new NullEncoding("ab", 0); },                     "Illegal empty string for NullEncoding"},
		{[] { return new NullEncoding("ab", -1); },                    "Illegal empty string for NullEncoding"},
		{[] { return new CDataEncoding("ab", 0); },                    "Illegal empty string for CDataEncoding"},
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(c.second);
		EXPECT_EQ(c.second, messageOf<FISEncodingException>([&] { Encoding::Ptr p(c.first()); }));
	}
}


TEST(EncodingTest, WritingNoDataIsAProgrammingError)
{
	Encoding::Ptr pNull(new NullEncoding);
	Encoding::Ptr pHex(new HexEncoding);
	Encoding::Ptr pBase64(new DWordEncoding);
	std::string empty;
	Encoding::Ptr pRef(new NullRefEncoding(empty));
	const std::vector<std::pair<std::function<void(BitStreamWriter&)>, const char*>> cases =
	{
		{[&](BitStreamWriter& w) { pNull->write(w); },   "!_content.empty()"},
		{[&](BitStreamWriter& w) { pHex->write(w); },    "!_content.empty()"},
		{[&](BitStreamWriter& w) { pBase64->write(w); }, "!_content.empty()"},
		{[&](BitStreamWriter& w) { pRef->write(w); },    "_data && !_data->empty()"},
		{[&](BitStreamWriter& w) { NullEncoding::encode(w, ""); }, "!str.empty()"},
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(c.second);
		EXPECT_THAT(messageOf<Ixor::AssertionViolationException>([&] { written(c.first); }), HasSubstr(c.second));
	}
}


//
// Decoding failures
//
struct SizeCase { unsigned int index; const char* octets; const char* message; };

const SizeCase SIZE_CASES[] =
{
	{3, "04 0001000200",                     "Illegal size entry for Ixor::Int16 value"},
	{4, "05 000000010000",                   "Illegal size entry for Ixor::Int32 value"},
	{5, "0b 000000000000000100000000",       "Illegal size entry for Ixor::Int64 value"},
	{7, "05 3fc000003fc0",                   "Illegal size entry for float value"},
	{8, "0b 3ff80000000000003ff80000",       "Illegal size entry for double value"},
	{9, "11 6ba7b8109dad11d180b400c04fd430c80000", "Illegal size entry for Ixor::UUID value"},
};


TEST(EncodingTest, LengthsThatAreNotAMultipleOfTheWidth)
{
	for (const SizeCase& c: SIZE_CASES)
	{
		SCOPED_TRACE(c.index);
		const std::string octets = fromHex(c.octets);
		Source typed(octets, Reading::MEMORY);
		EXPECT_EQ(c.message, messageOf<FISEncodingException>([&] { DECODINGS.read(static_cast<int>(c.index), typed.reader()); }));

		// The decoder to text of 32-bit integers alone reports the size as
		// FISException.
		Source text(octets, Reading::MEMORY);
		std::string back;
		try
		{
			ALGORITHMS[c.index].decodeText(text.reader(), back);
			ADD_FAILURE() << "no exception";
		}
		catch (const FISException& exc)
		{
			EXPECT_EQ(c.message, exc.message());
			EXPECT_EQ(c.index != 4, dynamic_cast<const FISEncodingException*>(&exc) != nullptr);
		}
		EXPECT_EQ("", back);
	}
}


TEST(EncodingTest, BooleanUnusedBitCounts)
{
	struct { const char* octets; const char* typed; const char* text; } cases[] =
	{
		{"00 50",    "Illegal unused bit count for boolean value", nullptr},   // 5 unused + 4 > 8 bits
		{"00 f0",    "Illegal unused bit count for boolean value", nullptr},
		{"01 f0 00", "Illegal unused bit count for boolean value", nullptr},   // 15 + 4 > 16
		{"00 40",    "Illegal (empty) data for BoolEncoding",      ""},        // no values at all
		{"01 c0 00", "Illegal (empty) data for BoolEncoding",      ""},
		{"01 87 80", "no exception", "false true true true"},                  // a count above 7 is read as it stands
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(c.octets);
		const std::string octets = fromHex(c.octets);
		Source typed(octets, Reading::MEMORY);
		EXPECT_EQ(c.typed, messageOf<FISEncodingException>([&] { DECODINGS.read(6, typed.reader()); }));
		Source text(octets, Reading::MEMORY);
		std::string back;
		const std::string message = messageOf<FISEncodingException>([&] { BoolEncoding::decode(text.reader(), back); });
		if (c.text) EXPECT_EQ(c.text, back);
		else EXPECT_EQ(c.typed, message);
	}
}


TEST(EncodingTest, LengthBeyondTheInputFailsWithoutAllocating)
{
	// The length claims 2^32 + 320 octets, a multiple of every value width;
	// four octets follow.
	const std::string octets = fromHex("60 ffffffff 00010203");
	for (unsigned int index = 1; index <= 10; ++index)
	{
		for (Reading reading: READINGS)
		{
			SCOPED_TRACE(testing::Message() << index << " " << reading);
			Source typed(octets, reading);
			EXPECT_THAT(messageOf<FISParseException>([&] { DECODINGS.read(static_cast<int>(index), typed.reader()); }),
				HasSubstr("Unexpected end of stream"));
			Source text(octets, reading);
			std::string back;
			EXPECT_THAT(messageOf<FISParseException>([&] { ALGORITHMS[index].decodeText(text.reader(), back); }),
				HasSubstr("Unexpected end of stream"));
		}
	}
}


TEST(EncodingTest, IndexesWithoutAnAlgorithm)
{
	for (unsigned int index: {0u, 11u, 20u, 31u, 32u, 1000u, UINT_MAX})
	{
		SCOPED_TRACE(index);
		std::ostringstream out;
		BitStreamWriter writer(out, false);
		writer.write(false);
		EXPECT_EQ("Invalid encoding defined", messageOf<FISException>([&] { ENCODINGS.encode(index, writer, "1"); }));
		EXPECT_EQ(1, writer.bitPos());
	}
	const std::string octets = fromHex("00 31");
	for (int index: {-1, 0, 11, 20, 31, 32, 1000, INT_MAX})
	{
		SCOPED_TRACE(index);
		Source source(octets, Reading::MEMORY);
		EXPECT_EQ("Invalid decoding defined", messageOf<FISException>([&] { DECODINGS.read(index, source.reader()); }));
		EXPECT_EQ(1, source.reader().bitPos());
		EXPECT_EQ(0u, source.reader().octetsConsumed());
	}
}


//
// Choosing an algorithm
//
TEST(EncodingTest, FindEncodingTakesTheFewestOctets)
{
	struct { const char* text; unsigned int index; } cases[] =
	{
		{"",            0},
		{"hello world", 10},    // only CDATA takes it
		{"1.5",         10},    // 3 text octets beat a 4-octet float
		{"1234",        1},     // hexadecimal and short both take 2 octets: the lower index wins
		{"-1",          3},     // short and CDATA both take 2 octets
		{"12345678",    1},     // hexadecimal, int and float tie at 4
		{"AAECAwQF",    2},     // base64: 6 octets
		{"true false",  6},
		{"6ba7b810-9dad-11d1-80b4-00c04fd430c8", 9},
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(c.text);
		EXPECT_EQ(c.index, ENCODINGS.findEncoding(c.text));
	}
}


//
// Merging
//
TEST(EncodingTest, MergeAppendsValuesOfTheSameAlgorithmOnly)
{
	typedef std::function<Encoding*()> Make;
	std::string cd("cd");
	struct Case { Make first; Make second; bool merged; const char* text; };
	const Case cases[] =
	{
		{[] { return new IntEncoding(1); },     [] { return new IntEncoding(2); },      true,  "1 2"},
		{[] { return new IntEncoding(1); },     [] { return new LongEncoding(2L); },    false, "1"},
		{[] { return new ShortEncoding(short(1)); }, [] { return new IntEncoding(1); }, false, "1"},
		{[] { return new LongEncoding(-5L); },  [] { return new LongEncoding(std::vector<long>{6, 7}); }, true, "-5 6 7"},
		{[] { return new BoolEncoding(true); }, [] { return new BoolEncoding(false); }, true,  "true false"},
		{[] { return new FloatEncoding(1.5f); }, [] { return new FloatEncoding(2.0f); }, true, "1.5 2"},
		{[] { return new DoubleEncoding(1.5); }, [] { return new FloatEncoding(2.0f); }, false, "1.5"},
		{[] { return new UUIDEncoding(Ixor::UUID("6ba7b810-9dad-11d1-80b4-00c04fd430c8")); },
		 [] { return new UUIDEncoding(std::string("00000000-0000-0000-0000-000000000001")); }, true,
		 "6BA7B810-9DAD-11D1-80B4-00C04FD430C8 00000000-0000-0000-0000-000000000001"},
		{[] { return new HexEncoding("\x01", 1); }, [] { return new HexEncoding(std::string("ab")); }, true, "01AB"},
		{[] { return new HexEncoding("\x01", 1); }, [] { return new DWordEncoding("\x01", 1); }, false, "01"},
		{[] { return new DWordEncoding("\x00\x01", 2); }, [] { return new DWordEncoding("\x02", 1); }, true, "AAEC"},
		{[] { return new CDataEncoding("a", 1); }, [] { return new CDataEncoding("b", 1); }, true, "ab"},
		{[] { return new CDataEncoding("a", 1); }, [] { return new NullEncoding("b", 1); }, false, "a"},
		{[] { return new NullEncoding("ab", 2); }, [] { return new NullEncoding("cd", 2); }, true, "abcd"},
		{[] { return new NullEncoding("ab", 2); }, [&] { return new NullRefEncoding(cd); }, true, "abcd"},
		{[] { return new NullEncoding("ab", 2); }, [] { return new IntEncoding(1); },   false, "ab"},
	};
	for (const Case& c: cases)
	{
		SCOPED_TRACE(c.text);
		Encoding::Ptr pFirst(c.first());
		Encoding::Ptr pSecond(c.second());
		EXPECT_EQ(c.merged, pFirst->merge(*pSecond));
		pFirst->createContent();
		EXPECT_EQ(c.text, textOf(*pFirst));
	}

	Encoding::Ptr pSelf(new IntEncoding(std::vector<int>{1, 2}));
	EXPECT_TRUE(pSelf->merge(*pSelf));
	pSelf->createContent();
	EXPECT_EQ("1 2 1 2", pSelf->content());
}


TEST(EncodingTest, NullRefEncodingReportsAndIsImmutable)
{
	std::string first("first");
	std::string second("second");
	NullRefEncoding::Ptr pRef(new NullRefEncoding(first));
	EXPECT_EQ("characters first", typedOf(*pRef));
	pRef->reset(second);
	EXPECT_EQ("second", textOf(*pRef));
	EXPECT_EQ(toHex(fromHex("05 7365636f6e64")), toHex(written([&](BitStreamWriter& w) { pRef->write(w); })));
	EXPECT_EQ(0u, pRef->type());

	Encoding::Ptr pOther(new NullEncoding("x", 1));
	EXPECT_EQ("NullRefEncoding is immutable", messageOf<Ixor::InvalidAccessException>([&] { pRef->merge(*pOther); }));
	EXPECT_EQ("NullRefEncoding is immutable", messageOf<Ixor::InvalidAccessException>([&] { pRef->content(); }));
	EXPECT_EQ("second", static_cast<const NullRefEncoding&>(*pRef).content());
}


//
// Delivery to handlers
//
TEST(EncodingTest, PlainStringsAndCDataAreCharactersForEveryHandler)
{
	std::string indexed("indexed");
	const std::vector<std::pair<Encoding::Ptr, const char*>> cases =
	{
		{new NullEncoding(std::string("plain")),   "plain"},
		{new NullRefEncoding(indexed),             "indexed"},
		{new CDataEncoding(std::string("a<b")),    "a<b"},
	};
	// A decoded plain string is a NullEncoding, as the one the parser keeps.
	const std::string octets = written([](BitStreamWriter& w) { NullEncoding::encode(w, "decoded"); });
	Source source(octets, Reading::MEMORY);
	Encoding::Ptr pDecoded = NullEncoding::decode(source.reader());
	EXPECT_TRUE(isA<NullEncoding>(*pDecoded));
	EXPECT_EQ("characters decoded", typedOf(*pDecoded));
	for (const auto& c: cases)
	{
		SCOPED_TRACE(c.second);
		EXPECT_EQ(std::string("characters ") + c.second, typedOf(*c.first));
		EXPECT_EQ(c.second, textOf(*c.first));
	}
}


TEST(EncodingTest, NullHandlersAreIgnored)
{
	const std::vector<Encoding::Ptr> values =
	{
		new NullEncoding(std::string("a")), new CDataEncoding(std::string("a")), new HexEncoding("a", 1),
		new DWordEncoding("a", 1), new ShortEncoding(short(1)), new IntEncoding(1), new LongEncoding(1L),
		new BoolEncoding(true), new FloatEncoding(1.0f), new DoubleEncoding(1.0), new UUIDEncoding(Ixor::UUID()),
	};
	for (const Encoding::Ptr& pValue: values)
	{
		pValue->handle(static_cast<Ixor::XML::ContentHandler*>(nullptr));
		pValue->handle(static_cast<FISContentHandler*>(nullptr));
	}
}


TEST(EncodingTest, Base64TextHasNoLineBreaks)
{
	const std::string data(300, '\xfe');
	Encoding::Ptr pValue(new DWordEncoding(data.data(), data.size()));
	const std::string text = textOf(*pValue);
	EXPECT_EQ(400u, text.size());
	EXPECT_EQ(std::string::npos, text.find_first_of("\r\n"));
	EXPECT_EQ("binary " + toHex(data), typedOf(*pValue));
}


TEST(EncodingTest, BinaryValuesGiveTheirTextAsContent)
{
	// Readers of the text form (attribute values, strings of an initial
	// vocabulary) take content(); the octets stay for typed handlers.
	struct { unsigned int index; const char* text; const char* merged; } cases[] =
	{
		{1, "01ABFF", "01ABFF02"},
		{2, "Aav/",   "Aav/Ag=="},
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(c.index);
		Source source(fromHex("02 01abff"), Reading::MEMORY);
		Encoding::Ptr pValue = DECODINGS.read(static_cast<int>(c.index), source.reader());
		EXPECT_EQ(c.text, static_cast<const Encoding&>(*pValue).content());
		EXPECT_EQ(c.text, pValue->content());
		EXPECT_EQ("binary 01abff", typedOf(*pValue));

		// A text asked for once follows later changes of the octets.
		Encoding::Ptr pMore = c.index == 1 ? static_cast<Encoding*>(new HexEncoding("\x02", 1)) : new DWordEncoding("\x02", 1);
		EXPECT_TRUE(pValue->merge(*pMore));
		EXPECT_EQ(c.merged, pValue->content());
		EXPECT_EQ(c.merged, textOf(*pValue));
		pValue->content() = "changed";
		pValue->createContent();
		EXPECT_EQ(c.merged, pValue->content());
	}
}


class AttributeRecorder: public Ixor::XML::DefaultHandler
	/// A plain SAX handler that keeps the value of each attribute.
{
public:
	void startElement(const Ixor::XML::XMLString&, const Ixor::XML::XMLString&, const Ixor::XML::XMLString&,
		const Ixor::XML::Attributes& attributes) override
	{
		for (int i = 0; i < attributes.getLength(); ++i) values.push_back(attributes.getValue(i));
	}

	std::vector<std::string> values;
};


TEST(EncodingTest, EncodedAttributeValuesReachAPlainHandlerAsText)
{
	// <r a="..."/>: 0 1 1111 00, local name "r"; the attribute 0 11110 00,
	// local name "a"; its value a literal at the first bit, 0 0, then the
	// encoding (10 alphabet, 11 algorithm), the index and the octets.
	struct { const char* value; const char* text; } cases[] =
	{
		{"30 01 01ab",             "01AB"},                   // 11 00000000 0001: hexadecimal, 2 octets
		{"30 11 01ab",             "Aas="},                   // base64
		{"30 63 7fc00000",         "NaN"},                    // float
		{"30 77 8000000000000000", "-0"},                     // double
		{"20 03 3c14da5f",         "3.14E-5"},                // 10 00000000 0011: numeric alphabet, 4 octets
		{"20 11 1e2f",             "1 2"},                    // date and time alphabet
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(c.text);
		const std::string document = fromHex("e0 00 00 01 00 7c 00 72 78 00 61") + fromHex(c.value) + fromHex("ff f0");
		for (Reading reading: READINGS)
		{
			SCOPED_TRACE(testing::Message() << reading);
			AttributeRecorder recorder;
			FastInfosetParser parser;
			parser.setContentHandler(&recorder);
			Input(document, reading).parse(parser);
			EXPECT_EQ(std::vector<std::string>{c.text}, recorder.values);
		}
	}
}


//
// Reuse by the writer
//
TEST(EncodingTest, AValueNamesTheFunctionsOfItsAlgorithm)
{
	for (const RoundTripCase& c: ROUND_TRIP_CASES)
	{
		SCOPED_TRACE(testing::Message() << c.index << " '" << c.text << "'");
		const std::string octets = written([&](BitStreamWriter& w) { ENCODINGS.encode(c.index, w, c.text); });
		Source source(octets, Reading::MEMORY);
		Encoding::Ptr pValue = DECODINGS.read(static_cast<int>(c.index), source.reader());
		// A decoded boolean list is a BoolEncoding, with its constants.
		EXPECT_TRUE(ALGORITHMS[c.index].isOfClass(*pValue));
		EXPECT_EQ(ALGORITHMS[c.index].check, pValue->checkMethod());
		EXPECT_EQ(octets, written([&](BitStreamWriter& w) { pValue->encodeMethod()(w, c.text); }));
		Source again(octets, Reading::MEMORY);
		EXPECT_EQ(c.textBack, textOf(*pValue->decodeMethod()(again.reader())));
	}
}


template <class E, class T>
void checkListReuse(const std::vector<T>& values)
	/// A list cleared and refilled value by value is the list of values.
{
	SCOPED_TRACE(typeid(E).name());
	Ixor::AutoPtr<E> pFresh(new E(values));
	pFresh->createContent();
	// The base's type information is the library's, visible to its users.
	Encoding* pValue = pFresh.get();
	EXPECT_EQ(pFresh.get(), dynamic_cast<E*>(pValue));
	Ixor::AutoPtr<E> pReused(new E(T(values.back())));
	pReused->append(values.front());
	pReused->createContent();
	pReused->clear();
	EXPECT_EQ("", pReused->content());
	EXPECT_EQ("", typedOf(*pReused));
	EXPECT_THAT(messageOf<Ixor::AssertionViolationException>([&] { written([&](BitStreamWriter& w) { pReused->write(w); }); }),
		HasSubstr("!_values.empty()"));

	for (const T& value: values) pReused->append(value);
	pReused->createContent();
	EXPECT_EQ(pFresh->content(), pReused->content());
	EXPECT_EQ(typedOf(*pFresh), typedOf(*pReused));
	EXPECT_EQ(toHex(written([&](BitStreamWriter& w) { pFresh->write(w); })),
		toHex(written([&](BitStreamWriter& w) { pReused->write(w); })));
	EXPECT_TRUE(pReused->merge(*pFresh));
	pReused->createContent();
	EXPECT_EQ(pFresh->content() + " " + pFresh->content(), pReused->content());
}


TEST(EncodingTest, ListsAppendInPlaceAndClearForReuse)
{
	checkListReuse<ShortEncoding>(std::vector<short>{-32768, 0, 32767});
	checkListReuse<IntEncoding>(std::vector<int>{7, -2147483647 - 1});
	checkListReuse<LongEncoding>(std::vector<long>{-1, 9223372036854775807L});
	checkListReuse<BoolEncoding>(std::vector<bool>{true, false, false, true, true});
	checkListReuse<FloatEncoding>(std::vector<float>{1.5f, -0.0f});
	checkListReuse<DoubleEncoding>(std::vector<double>{5e-324, 2.5});
	checkListReuse<UUIDEncoding>(std::vector<Ixor::UUID>{Ixor::UUID("6ba7b810-9dad-11d1-80b4-00c04fd430c8"), Ixor::UUID()});
}


template <class E>
void checkOctetReuse(const char* text, const char* octets)
	/// "\x01" appended with "\xab\xcd" gives text; cleared and given "\x02"
	/// it writes octets.
{
	SCOPED_TRACE(typeid(E).name());
	Ixor::AutoPtr<E> pValue(new E("\x01", 1));
	Encoding* pBase = pValue.get();
	EXPECT_EQ(pValue.get(), dynamic_cast<E*>(pBase));
	pValue->append("\xab\xcd", 2);
	pValue->append(nullptr, 0);
	EXPECT_EQ(text, textOf(*pValue));
	EXPECT_EQ("binary 01abcd", typedOf(*pValue));
	pValue->clear();
	EXPECT_EQ("", pValue->content());
	EXPECT_THAT(messageOf<Ixor::AssertionViolationException>([&] { written([&](BitStreamWriter& w) { pValue->write(w); }); }),
		HasSubstr("!_content.empty()"));
	pValue->append("\x02", 1);
	EXPECT_EQ(toHex(fromHex(octets)), toHex(written([&](BitStreamWriter& w) { pValue->write(w); })));
}


TEST(EncodingTest, BinaryDataAppendsInPlaceAndClearsForReuse)
{
	checkOctetReuse<HexEncoding>("01ABCD", "00 02");
	checkOctetReuse<DWordEncoding>("AavN", "00 02");
}
