#include "Ixor/FastInfoset/UUIDEncoding.h"
#include "AlgorithmTable.h"
#include "ValueListEncodingImpl.h"


namespace Ixor {
namespace FastInfoset {


template <>
struct ValueListTraits<UUIDValues>: EncodingSupport::FixedWidth<16>
	/// Each UUID as its 16 octets in network order, as the canonical text
	/// reads.
{
	static constexpr unsigned int TYPE = AlgorithmTable::UUID;
	static constexpr const char* EMPTY_DATA   = "Illegal (empty) data for UUIDEncoding";
	static constexpr const char* VALUE_STRING = "Illegal value string for UUIDEncoding";
	static constexpr const char* SIZE_ENTRY   = "Illegal size entry for Ixor::UUID value";
	static constexpr std::size_t TEXT_PER_VALUE = 37;

	static void load(const unsigned char* p, std::size_t i, Ixor::UUID& uuid)
	{
		uuid.copyFrom(reinterpret_cast<const char*>(p + i*WIDTH));
	}

	static void appendTextAt(std::string& text, const unsigned char* p, std::size_t i)
	{
		appendOctets(text, p + i*WIDTH);
	}

	static void appendOctets(std::string& text, const unsigned char* p);

	static void writeValues(BitStreamWriter& writer, const std::vector<Ixor::UUID>& uuids);

	static bool parseValue(const std::string& piece, std::string&, Ixor::UUID& uuid)
	{
		// tryParse accepts exactly what the UUID string constructor accepts,
		// without an exception per refused piece.
		return !piece.empty() && uuid.tryParse(piece);
	}

	static void appendText(std::string& text, const Ixor::UUID& uuid);
};


void ValueListTraits<UUIDValues>::writeValues(BitStreamWriter& writer, const std::vector<Ixor::UUID>& uuids)
{
	Encoder::nonEmptyStringLength(writer, uuids.size()*WIDTH);
	char buffer[64*WIDTH];
	std::size_t used = 0;
	for (const Ixor::UUID& uuid: uuids)
	{
		uuid.copyTo(buffer + used);
		used += WIDTH;
		if (used == sizeof(buffer))
		{
			writer.write(buffer, used);
			used = 0;
		}
	}
	if (used) writer.write(buffer, used);
}


void ValueListTraits<UUIDValues>::appendText(std::string& text, const Ixor::UUID& uuid)
{
	char octets[WIDTH];
	uuid.copyTo(octets);
	appendOctets(text, reinterpret_cast<const unsigned char*>(octets));
}


void ValueListTraits<UUIDValues>::appendOctets(std::string& text, const unsigned char* p)
{
	// The groups of 4, 2, 2, 2 and 6 octets as zero-padded hexadecimal
	// numbers, which the host formatter writes in upper case.
	using EncodingSupport::loadBigEndian;
	Ixor::NumberFormatter::appendHex(text, loadBigEndian<UInt32>(p), 8);
	text += '-';
	Ixor::NumberFormatter::appendHex(text, static_cast<unsigned>(loadBigEndian<UInt16>(p + 4)), 4);
	text += '-';
	Ixor::NumberFormatter::appendHex(text, static_cast<unsigned>(loadBigEndian<UInt16>(p + 6)), 4);
	text += '-';
	Ixor::NumberFormatter::appendHex(text, static_cast<unsigned>(loadBigEndian<UInt16>(p + 8)), 4);
	text += '-';
	const UInt64 node = (UInt64(loadBigEndian<UInt16>(p + 10)) << 32) | loadBigEndian<UInt32>(p + 12);
	Ixor::NumberFormatter::appendHex(text, node, 12);
}


template class ValueListEncoding<UUIDValues, Ixor::UUID>;


} } // namespace Ixor::FastInfoset
