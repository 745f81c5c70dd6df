//
// PrimitiveFuzzer.cpp
//
// The primitive decodings and the bit streams under them.
//
// 1. Integers, octet-string lengths, octet strings, sequence lengths and
//    name surrogates are decoded from the input at every start position,
//    over memory and over a stream that trickles its octets: both readers
//    must agree on the value, the exception and the position. A decoded
//    value is encoded again at the same position and must decode to
//    itself, and the octets of a string must be those of the input.
//    Sequence lengths above 128 are left out: the encoder writes them in
//    a form that reads back differently, on purpose (see BitCodecTest,
//    SequenceLengthsKeepTheirDeliberateLongForm).
// 2. A script of bit reads, derived from the input, runs on both readers
//    and on a plain reference reader; all three must agree after every
//    step, across buffer refills.
// 3. A script of bit writes runs on BitStreamWriter and on a plain
//    reference writer; the octets must be the same.
//


#include "FuzzSupport.h"
#include "Reading.h"
#include "Ixor/FastInfoset/BitStreamReader.h"
#include "Ixor/FastInfoset/BitStreamWriter.h"
#include "Ixor/FastInfoset/Decoder.h"
#include "Ixor/FastInfoset/Encoder.h"
#include "Ixor/FastInfoset/FISException.h"
#include <cstdint>
#include <random>
#include <sstream>


using namespace Ixor::FastInfoset;
using namespace FuzzSupport;
using namespace TestSupport;


namespace {


class ReferenceReader
	/// Bits one by one, most significant first.
{
public:
	explicit ReferenceReader(const std::string& data):
		_data(data)
	{
	}

	bool read(int numBits, std::uint64_t& value)
	{
		value = 0;
		if (_overrun || _pos + numBits > 8 * _data.size())
		{
			_overrun = true;
			return false;
		}
		for (int i = 0; i < numBits; ++i, ++_pos)
		{
			value = (value << 1) | ((static_cast<unsigned char>(_data[_pos / 8]) >> (7 - _pos % 8)) & 1);
		}
		return true;
	}

	bool peek(int numBits, std::uint64_t& value)
	{
		const std::uint64_t pos = _pos;
		const bool overrun = _overrun;
		const bool ok = read(numBits, value);
		_pos = pos;
		_overrun = overrun;
		return ok;
	}

	void skip(int numBits)
	{
		_pos += numBits;
	}

	std::uint64_t pos() const
	{
		return _pos;
	}

	void setPos(std::uint64_t pos)
	{
		_pos = pos;
	}

	bool overrun() const
	{
		return _overrun;
	}

private:
	const std::string& _data;
	std::uint64_t      _pos = 0;
	bool               _overrun = false;
};


std::string position(BitStreamReader& reader)
{
	return std::to_string(reader.octetsConsumed()) + "." + std::to_string(reader.bitPos());
}


//
// 1. Primitive decodings at every start position
//
enum Primitive
{
	INTEGER,
	STRING_LENGTH,
	OCTET_STRING,
	SEQUENCE_LENGTH,
	NAME_SURROGATE,
	PRIMITIVES
};


const char* const PRIMITIVE_NAMES[] = {"integer", "string length", "octet string", "sequence length", "name surrogate"};


struct Decoded
{
	std::string   outcome;
	std::uint64_t value = 0;
	std::string   octets;
	std::string   where;
};


template <class T>
std::uint64_t numberRead(void (*decode)(BitStreamReader&, T&), BitStreamReader& reader)
	/// What a decoder of a number reads.
{
	T value = 0;
	decode(reader, value);
	return value;
}


Decoded decode(Primitive primitive, BitStreamReader& reader, int start)
{
	Decoded result;
	result.outcome = outcomeOf([&]
	{
		reader.skip(start);
		switch (primitive)
		{
		case INTEGER:
			result.value = numberRead(&Decoder::integer, reader);
			break;
		case STRING_LENGTH:
			result.value = numberRead(&Decoder::nonEmptyStringLength, reader);
			break;
		case OCTET_STRING:
			Decoder::nonEmptyOctetString(reader, result.octets);
			result.value = result.octets.size();
			break;
		case SEQUENCE_LENGTH:
			result.value = numberRead(&Decoder::lengthOfSequence, reader);
			break;
		case NAME_SURROGATE:
			{
				const QualifiedNameEntry entry = Decoder::nameSurrogate(reader);
				result.value = (std::uint64_t(entry.prefixId()) << 42) ^ (std::uint64_t(entry.namespaceId()) << 21) ^ entry.localNameId();
			}
			break;
		default:
			break;
		}
	});
	result.where = position(reader);
	return result;
}


std::string reencoded(Primitive primitive, const std::string& data, int start, std::uint64_t value)
	/// The input's first start bits, then value encoded, or "" when the
	/// encoder refuses the value there.
{
	std::ostringstream out;
	BitStreamWriter writer(out, false);
	ReferenceReader bits(data);
	std::uint64_t head = 0;
	if (start > 0)
	{
		bits.read(start, head);
		writer.write(static_cast<unsigned int>(head), start);
	}
	const std::string outcome = outcomeOf([&]
	{
		if (primitive == INTEGER) Encoder::integer(writer, static_cast<unsigned int>(value));
		else if (primitive == STRING_LENGTH) Encoder::nonEmptyStringLength(writer, static_cast<unsigned long>(value));
		else Encoder::lengthOfSequence(writer, static_cast<unsigned int>(value));
	});
	if (outcome != "ok") return std::string();
	writer.complete();
	return out.str();
}


void checkPrimitives(const std::string& data, std::uint64_t seed)
{
	for (int start = 0; start < 8; ++start)
	{
		for (int p = 0; p < PRIMITIVES; ++p)
		{
			const Primitive primitive = static_cast<Primitive>(p);
			Input memory(data, Reading::MEMORY);
			Input stream(data, trickleSizes(seed));
			const Decoded fromMemory = decode(primitive, memory.reader(), start);
			const Decoded fromStream = decode(primitive, stream.reader(), start);
			const std::string what = std::string(PRIMITIVE_NAMES[p]) + " at bit " + std::to_string(start);
			if (fromMemory.outcome != fromStream.outcome || fromMemory.value != fromStream.value
				|| fromMemory.octets != fromStream.octets || fromMemory.where != fromStream.where)
			{
				fail(what + ": memory and stream differ\n memory: " + fromMemory.outcome + " value " + std::to_string(fromMemory.value) + " at " + fromMemory.where
					+ "\n stream: " + fromStream.outcome + " value " + std::to_string(fromStream.value) + " at " + fromStream.where);
			}
			if (fromMemory.outcome != "ok") continue;

			if (primitive == OCTET_STRING)
			{
				const std::size_t end = memory.reader().octetsConsumed();
				if (end < fromMemory.octets.size() || data.compare(end - fromMemory.octets.size(), fromMemory.octets.size(), fromMemory.octets) != 0)
					fail(what + ": the octets are not those of the input");
			}
			else if (primitive == INTEGER || primitive == STRING_LENGTH || (primitive == SEQUENCE_LENGTH && fromMemory.value <= 128))
			{
				const std::string again = reencoded(primitive, data, start, fromMemory.value);
				if (again.empty()) continue;
				Input copy(again, Reading::MEMORY);
				const Decoded twice = decode(primitive, copy.reader(), start);
				if (twice.outcome != "ok" || twice.value != fromMemory.value)
					fail(what + ": " + std::to_string(fromMemory.value) + " encoded again decodes to " + std::to_string(twice.value) + " (" + twice.outcome + ")");
			}
		}
	}
}


//
// 2. Reader script
//
void checkReaderScript(const std::string& data, std::uint64_t seed)
{
	std::mt19937_64 random(seed);
	Input memory(data, Reading::MEMORY);
	Input stream(data, trickleSizes(seed + 1));
	BitStreamReader* readers[] = {&memory.reader(), &stream.reader()};
	ReferenceReader reference(data);

	for (int step = 0; step < 200; ++step)
	{
		const int op = static_cast<int>(random() % 9);
		const int bits64 = 1 + static_cast<int>(random() % 64);
		const std::size_t length = random() % 8 == 0 ? random() % 1500 : random() % 24;
		const std::string what = "step " + std::to_string(step) + " op " + std::to_string(op) + " at " + std::to_string(reference.pos());

		std::uint64_t expected = 0;
		bool expectedOk = true;
		std::string expectedOctets;
		switch (op)
		{
		case 0: expectedOk = reference.read(1, expected); break;
		case 1: expectedOk = reference.peek(1 + bits64 % 8, expected); break;
		case 2: expectedOk = reference.read(1 + bits64 % 8, expected); break;
		case 3: expectedOk = reference.read(1 + bits64 % 16, expected); break;
		case 4: expectedOk = reference.read(1 + bits64 % 32, expected); break;
		case 5: expectedOk = reference.read(bits64, expected); break;
		case 6:
			if (reference.pos() + 8 * length <= 8 * data.size() && !reference.overrun())
			{
				for (std::size_t i = 0; i < length; ++i)
				{
					std::uint64_t octet = 0;
					reference.read(8, octet);
					expectedOctets += static_cast<char>(octet);
				}
			}
			else expectedOk = false;
			break;
		case 7:
			reference.setPos((reference.pos() + 7) & ~std::uint64_t(7));
			break;
		default:
			reference.skip(1 + bits64 % 8);
			break;
		}

		std::string outcomes[2];
		for (int i = 0; i < 2; ++i)
		{
			BitStreamReader& reader = *readers[i];
			bool ok = true;
			std::uint64_t value = 0;
			std::string octets;
			outcomes[i] = outcomeOf([&]
			{
				switch (op)
				{
				case 0: { bool bit = false; ok = reader.read(bit); value = bit; } break;
				case 1: { unsigned char v = 0; ok = reader.peek(v, 1 + bits64 % 8); value = v; } break;
				case 2: { unsigned char v = 0; ok = reader.read(v, 1 + bits64 % 8); value = v; } break;
				case 3: { unsigned short v = 0; ok = reader.read(v, 1 + bits64 % 16); value = v; } break;
				case 4: { unsigned int v = 0; ok = reader.read(v, 1 + bits64 % 32); value = v; } break;
				case 5: { unsigned long v = 0; ok = reader.read(v, bits64); value = v; } break;
				case 6: ok = reader.read(octets, length); break;
				case 7: reader.skipToByteStart(); break;
				default: reader.skip(1 + bits64 % 8); break;
				}
			});
			if (outcomes[i] == "ok" && !ok) outcomes[i] = "false";
			if (outcomes[i] != "ok") continue;
			if (!expectedOk) fail(what + ": reader " + std::to_string(i) + " read past the end");
			if (value != expected || octets != expectedOctets)
				fail(what + ": reader " + std::to_string(i) + " read " + std::to_string(value) + ", the bits are " + std::to_string(expected));
			if (8 * reader.octetsConsumed() + static_cast<std::uint64_t>(reader.bitPos()) != reference.pos())
				fail(what + ": reader " + std::to_string(i) + " stands at " + position(reader) + " instead of bit " + std::to_string(reference.pos()));
		}
		if (outcomes[0] != outcomes[1]) fail(what + ": memory and stream differ\n memory: " + outcomes[0] + "\n stream: " + outcomes[1]);
		if (outcomes[0] != "ok")
		{
			if (expectedOk) fail(what + ": the readers failed on available bits (" + outcomes[0] + ")");
			return;
		}
		// Skipped past the end: what follows is only failures.
		if (reference.pos() > 8 * data.size()) return;
	}
}


//
// 3. Writer script
//
class ReferenceWriter
{
public:
	void write(std::uint64_t value, int numBits)
	{
		for (int i = numBits - 1; i >= 0; --i) bit(((value >> i) & 1) != 0);
	}

	void bit(bool b)
	{
		_octet = static_cast<unsigned char>((_octet << 1) | (b ? 1 : 0));
		if (++_count == 8)
		{
			_octets += static_cast<char>(_octet);
			_octet = 0;
			_count = 0;
		}
	}

	void pad(bool fill)
	{
		while (_count != 0) bit(fill);
	}

	const std::string& octets() const
	{
		return _octets;
	}

	int bitPos() const
	{
		return _count;
	}

private:
	std::string   _octets;
	unsigned char _octet = 0;
	int           _count = 0;
};


void checkWriterScript(const std::string& data, std::uint64_t seed)
{
	std::mt19937_64 random(seed ^ 0x5bd1e995u);
	std::ostringstream out;
	ReferenceWriter reference;
	{
		BitStreamWriter writer(out, false);
		std::size_t used = 0;
		for (int step = 0; step < 200 && used < data.size(); ++step)
		{
			const int op = static_cast<int>(random() % 7);
			const int bits = 1 + static_cast<int>(random() % 64);
			std::uint64_t value = 0;
			for (int i = 0; i < 8 && used < data.size(); ++i) value = (value << 8) | static_cast<unsigned char>(data[used++]);
			switch (op)
			{
			case 0: writer.write((value & 1) != 0); reference.bit((value & 1) != 0); break;
			case 1: writer.write(static_cast<unsigned char>(value), 1 + bits % 8); reference.write(value, 1 + bits % 8); break;
			case 2: writer.write(static_cast<unsigned short>(value), 1 + bits % 16); reference.write(value, 1 + bits % 16); break;
			case 3: writer.write(static_cast<unsigned int>(value), 1 + bits % 32); reference.write(value, 1 + bits % 32); break;
			case 4: writer.write(static_cast<unsigned long>(value), bits); reference.write(value, bits); break;
			case 5:
				{
					const std::size_t length = std::min<std::size_t>(random() % 8 == 0 ? random() % 1500 : random() % 16, data.size());
					const std::string octets = data.substr(0, length);
					writer.write(octets);
					for (char c: octets) reference.write(static_cast<unsigned char>(c), 8);
				}
				break;
			default:
				writer.writeBits(bits % 20, (value & 1) != 0);
				for (int i = 0; i < bits % 20; ++i) reference.bit((value & 1) != 0);
				break;
			}
			if (writer.bitPos() != reference.bitPos()) fail("writer step " + std::to_string(step) + ": bit position differs");
		}
		writer.complete(true);
		reference.pad(true);
	}
	if (out.str() != reference.octets()) fail("the writer's octets differ from the bits written");
}


} // namespace


extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
	const std::string input(reinterpret_cast<const char*>(data), size);
	const std::uint64_t seed = seedOf(data, size);
	checkPrimitives(input, seed);
	checkReaderScript(input, seed);
	checkWriterScript(input, seed);
	return 0;
}
