#include "Ixor/FastInfoset/UUIDEncoding.h"
#include "Ixor/FastInfoset/FISContentHandler.h"
#include "EncodingSupport.h"
#include "Poco/NumberFormatter.h"


namespace Ixor {
namespace FastInfoset {


namespace
{
	const char* const EMPTY_DATA   = "Illegal (empty) data for UUIDEncoding";
	const char* const VALUE_STRING = "Illegal value string for UUIDEncoding";
	const char* const SIZE_ENTRY   = "Illegal size entry for Ixor::UUID value";
	const std::size_t UUID_SIZE    = 16;


	void appendText(const unsigned char* p, std::string& text)
		/// The 16 octets at p as canonical text: the groups of 4, 2, 2, 2
		/// and 6 octets as zero-padded hexadecimal numbers, which the host
		/// formatter writes in upper case.
	{
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


	std::size_t readUUIDs(BitStreamReader& reader, std::string& scratch, const unsigned char*& p)
	{
		const std::size_t length = EncodingSupport::readValueLength<FISEncodingException>(reader, UUID_SIZE, SIZE_ENTRY);
		p = EncodingSupport::readOctets(reader, length, scratch);
		return length/UUID_SIZE;
	}
}


UUIDEncoding::UUIDEncoding():
	_values()
{
}


UUIDEncoding::UUIDEncoding(const Ixor::UUID& uuid):
	_values(1, uuid)
{
}


UUIDEncoding::UUIDEncoding(const std::vector<Ixor::UUID>& uuids):
	_values(uuids)
{
	if (_values.empty()) throw FISEncodingException(EMPTY_DATA);
}


UUIDEncoding::UUIDEncoding(const std::string& text)
{
	if (text.empty()) throw FISEncodingException(EMPTY_DATA);
	parse(text, _values);
	if (_values.empty()) throw FISEncodingException(VALUE_STRING);
}


UUIDEncoding::~UUIDEncoding()
{
}


void UUIDEncoding::parse(const std::string& text, std::vector<Ixor::UUID>& uuids)
{
	// tryParse accepts exactly what the UUID string constructor accepts,
	// without an exception per refused piece.
	EncodingSupport::parseList(text, uuids, [](const std::string& piece, std::string&, Ixor::UUID& uuid)
	{
		return !piece.empty() && uuid.tryParse(piece);
	});
}


unsigned int UUIDEncoding::type() const
{
	return 9;
}


bool UUIDEncoding::merge(const Encoding& other)
{
	const UUIDEncoding* pOther = other.type() == type() ? dynamic_cast<const UUIDEncoding*>(&other) : nullptr;
	if (!pOther) return false;
	EncodingSupport::appendCopy(_values, pOther->_values);
	return true;
}


void UUIDEncoding::write(BitStreamWriter& writer) const
{
	writeValues(writer, _values);
}


void UUIDEncoding::writeValues(BitStreamWriter& writer, const std::vector<Ixor::UUID>& uuids)
{
	Encoder::nonEmptyStringLength(writer, uuids.size()*UUID_SIZE);
	char buffer[64*UUID_SIZE];
	std::size_t used = 0;
	for (const Ixor::UUID& uuid: uuids)
	{
		// The octets in network order, as the canonical text reads.
		uuid.copyTo(buffer + used);
		used += UUID_SIZE;
		if (used == sizeof(buffer))
		{
			writer.write(buffer, used);
			used = 0;
		}
	}
	if (used) writer.write(buffer, used);
}


void UUIDEncoding::decode(BitStreamReader& reader, std::string& text)
{
	text.clear();
	std::string scratch;
	const unsigned char* p = nullptr;
	const std::size_t count = readUUIDs(reader, scratch, p);
	text.reserve(count*37);
	for (std::size_t i = 0; i < count; ++i, p += UUID_SIZE)
	{
		if (i) text += ' ';
		appendText(p, text);
	}
}


void UUIDEncoding::decode(BitStreamReader& reader, std::vector<Ixor::UUID>& uuids)
{
	uuids.clear();
	std::string scratch;
	const unsigned char* p = nullptr;
	const std::size_t count = readUUIDs(reader, scratch, p);
	uuids.resize(count);
	for (std::size_t i = 0; i < count; ++i, p += UUID_SIZE)
		uuids[i].copyFrom(reinterpret_cast<const char*>(p));
}


Ixor::AutoPtr<Encoding> UUIDEncoding::decode(BitStreamReader& reader)
{
	Ixor::AutoPtr<UUIDEncoding> pEncoding(new UUIDEncoding);
	decode(reader, pEncoding->_values);
	pEncoding->createContent();
	return pEncoding;
}


Int32 UUIDEncoding::check(const std::string& text)
{
	std::vector<Ixor::UUID> uuids;
	parse(text, uuids);
	return EncodingSupport::octetCount(uuids.size()*UUID_SIZE);
}


void UUIDEncoding::encode(BitStreamWriter& writer, const std::string& text)
{
	// As UUIDEncoding(text).write(writer), without the heap object.
	if (text.empty()) throw FISEncodingException(EMPTY_DATA);
	std::vector<Ixor::UUID> uuids;
	parse(text, uuids);
	if (uuids.empty()) throw FISEncodingException(VALUE_STRING);
	writeValues(writer, uuids);
}


DecodeMethod UUIDEncoding::decodeMethod() const
{
	return &UUIDEncoding::decode;
}


CheckMethod UUIDEncoding::checkMethod() const
{
	return &UUIDEncoding::check;
}


EncodeMethod UUIDEncoding::encodeMethod() const
{
	return &UUIDEncoding::encode;
}


void UUIDEncoding::handle(FISContentHandler* pHandler) const
{
	if (!pHandler) return;
	for (const Ixor::UUID& uuid: _values) pHandler->encodedData(uuid);
}


void UUIDEncoding::createContent()
{
	_content.clear();
	_content.reserve(_values.size()*37);
	char octets[UUID_SIZE];
	for (std::size_t i = 0; i < _values.size(); ++i)
	{
		if (i) _content += ' ';
		_values[i].copyTo(octets);
		appendText(reinterpret_cast<const unsigned char*>(octets), _content);
	}
}


} } // namespace Ixor::FastInfoset
