#include "Ixor/FastInfoset/BoolEncoding.h"
#include "AlgorithmTable.h"
#include "ValueListEncodingImpl.h"


namespace Ixor {
namespace FastInfoset {


template <>
struct ValueListTraits<BoolValues>
	/// A boolean string: the 4-bit count of unused bits, then one bit per
	/// value from bit 4 of the first octet on.
{
	typedef BoolEncoding Object;

	static constexpr unsigned int TYPE = AlgorithmTable::BOOLEAN;
	static constexpr const char* EMPTY_DATA   = "Illegal (empty) data for BoolEncoding";
	static constexpr const char* VALUE_STRING = "Illegal value string for BoolEncoding";
	static constexpr const char* SIZE_ENTRY   = "Illegal unused bit count for boolean value";

	// Every length holds whole octets of bits; countOf() checks the count.
	static constexpr std::size_t WIDTH = 1;
	static constexpr std::size_t TEXT_PER_VALUE = 6;

	typedef FISEncodingException TextSizeException;

	static std::size_t countOf(const unsigned char* p, std::size_t length)
	{
		const std::size_t bits = length*8;
		const std::size_t unused = p[0] >> 4;
		// A count beyond what the octets hold would take bits from outside
		// the string.
		if (unused + 4 > bits) throw FISEncodingException(SIZE_ENTRY);
		return bits - unused - 4;
	}

	static bool bitAt(const unsigned char* p, std::size_t i)
	{
		const std::size_t bit = i + 4;
		return (p[bit >> 3] & Utility::revertedPow2[bit & 7]) != 0;
	}

	static void load(const unsigned char* p, std::size_t i, std::vector<bool>::reference value)
	{
		value = bitAt(p, i);
	}

	static void appendTextAt(std::string& text, const unsigned char* p, std::size_t i)
	{
		appendText(text, bitAt(p, i));
	}

	static void writeValues(BitStreamWriter& writer, const std::vector<bool>& values);

	static std::size_t octetsFor(std::size_t count)
	{
		return (count + 7)/8;
	}

	static bool parseValue(const std::string& piece, std::string&, bool& value)
	{
		if (piece == BoolEncoding::VAL_TRUE) value = true;
		else if (piece == BoolEncoding::VAL_FALSE) value = false;
		else return false;
		return true;
	}

	static void appendText(std::string& text, bool value)
	{
		text += value ? BoolEncoding::VAL_TRUE : BoolEncoding::VAL_FALSE;
	}
};


void ValueListTraits<BoolValues>::writeValues(BitStreamWriter& writer, const std::vector<bool>& values)
{
	const std::size_t count = values.size();
	Encoder::nonEmptyStringLength(writer, (count + 4 + 7)/8);
	unsigned int unused = (count + 4) % 8;
	if (unused != 0) unused = 8 - unused;

	// The count and the bits are packed into whole octets; the last one is
	// padded with 0 bits, which ends the string on an octet boundary.
	char buffer[1024];
	std::size_t used = 0;
	unsigned int octet = unused;
	int filled = 4;
	for (bool value: values)
	{
		octet = (octet << 1) | (value ? 1u : 0u);
		if (++filled == 8)
		{
			buffer[used++] = static_cast<char>(octet);
			octet = 0;
			filled = 0;
			if (used == sizeof(buffer))
			{
				writer.write(buffer, used);
				used = 0;
			}
		}
	}
	if (filled != 0) buffer[used++] = static_cast<char>(octet << (8 - filled));
	writer.write(buffer, used);
}


template class ValueListEncoding<BoolValues, bool>;


const std::string BoolEncoding::VAL_TRUE("true");
const std::string BoolEncoding::VAL_FALSE("false");


BoolEncoding::~BoolEncoding()
{
}


} } // namespace Ixor::FastInfoset
