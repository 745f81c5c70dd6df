#include "Ixor/FastInfoset/ShortEncoding.h"
#include "Ixor/FastInfoset/FISContentHandler.h"
#include "EncodingSupport.h"
#include "Poco/NumberFormatter.h"
#include "Poco/NumberParser.h"
#include <limits>


namespace Ixor {
namespace FastInfoset {


namespace
{
	const char* const EMPTY_DATA   = "Illegal (empty) data for ShortEncoding";
	const char* const VALUE_STRING = "Illegal value string for ShortEncoding";
	const char* const SIZE_ENTRY   = "Illegal size entry for Ixor::Int16 value";
}


ShortEncoding::ShortEncoding():
	_values()
{
}


ShortEncoding::ShortEncoding(short value):
	_values(1, value)
{
}


ShortEncoding::ShortEncoding(const std::vector<short>& values):
	_values(values)
{
	if (_values.empty()) throw FISEncodingException(EMPTY_DATA);
}


ShortEncoding::ShortEncoding(const std::string& text)
{
	if (text.empty()) throw FISEncodingException(EMPTY_DATA);
	parse(text, _values);
	if (_values.empty()) throw FISEncodingException(VALUE_STRING);
}


ShortEncoding::~ShortEncoding()
{
}


void ShortEncoding::parse(const std::string& text, std::vector<short>& values)
{
	// Only canonical decimals come back unchanged from the formatter: no
	// plus sign, no leading zeros, no minus zero, no white space.
	EncodingSupport::parseList(text, values, [](const std::string& piece, std::string& canonical, short& value)
	{
		int parsed = 0;
		if (!Ixor::NumberParser::tryParse(piece, parsed)) return false;
		canonical.clear();
		Ixor::NumberFormatter::append(canonical, parsed);
		if (canonical != piece) return false;
		if (parsed < std::numeric_limits<short>::min() || parsed > std::numeric_limits<short>::max()) return false;
		value = static_cast<short>(parsed);
		return true;
	});
}


unsigned int ShortEncoding::type() const
{
	return 3;
}


bool ShortEncoding::merge(const Encoding& other)
{
	const ShortEncoding* pOther = other.type() == type() ? dynamic_cast<const ShortEncoding*>(&other) : nullptr;
	if (!pOther) return false;
	EncodingSupport::appendCopy(_values, pOther->_values);
	return true;
}


void ShortEncoding::write(BitStreamWriter& writer) const
{
	writeValues(writer, _values);
}


void ShortEncoding::writeValues(BitStreamWriter& writer, const std::vector<short>& values)
{
	EncodingSupport::writeBigEndian(writer, values);
}


void ShortEncoding::decode(BitStreamReader& reader, std::string& text)
{
	text.clear();
	const std::size_t length = EncodingSupport::readValueLength<FISEncodingException>(reader, sizeof(Int16), SIZE_ENTRY);
	std::string scratch;
	const unsigned char* p = EncodingSupport::readOctets(reader, length, scratch);
	text.reserve(length*4);
	for (const unsigned char* const pEnd = p + length; p != pEnd; p += sizeof(Int16))
	{
		if (!text.empty()) text += ' ';
		Ixor::NumberFormatter::append(text, EncodingSupport::loadBigEndian<short>(p));
	}
}


void ShortEncoding::decode(BitStreamReader& reader, std::vector<short>& values)
{
	values.clear();
	const std::size_t length = EncodingSupport::readValueLength<FISEncodingException>(reader, sizeof(Int16), SIZE_ENTRY);
	std::string scratch;
	const unsigned char* p = EncodingSupport::readOctets(reader, length, scratch);
	EncodingSupport::appendFromBigEndian(p, length/sizeof(Int16), values);
}


Ixor::AutoPtr<Encoding> ShortEncoding::decode(BitStreamReader& reader)
{
	Ixor::AutoPtr<ShortEncoding> pEncoding(new ShortEncoding);
	decode(reader, pEncoding->_values);
	pEncoding->createContent();
	return pEncoding;
}


Int32 ShortEncoding::check(const std::string& text)
{
	std::vector<short> values;
	parse(text, values);
	return EncodingSupport::octetCount(values.size()*sizeof(Int16));
}


void ShortEncoding::encode(BitStreamWriter& writer, const std::string& text)
{
	// As ShortEncoding(text).write(writer), without the heap object.
	if (text.empty()) throw FISEncodingException(EMPTY_DATA);
	std::vector<short> values;
	parse(text, values);
	if (values.empty()) throw FISEncodingException(VALUE_STRING);
	writeValues(writer, values);
}


DecodeMethod ShortEncoding::decodeMethod() const
{
	return &ShortEncoding::decode;
}


CheckMethod ShortEncoding::checkMethod() const
{
	return &ShortEncoding::check;
}


EncodeMethod ShortEncoding::encodeMethod() const
{
	return &ShortEncoding::encode;
}


void ShortEncoding::handle(FISContentHandler* pHandler) const
{
	if (!pHandler) return;
	for (short value: _values) pHandler->encodedData(value);
}


void ShortEncoding::createContent()
{
	_content.clear();
	for (std::size_t i = 0; i < _values.size(); ++i)
	{
		if (i) _content += ' ';
		Ixor::NumberFormatter::append(_content, _values[i]);
	}
}


} } // namespace Ixor::FastInfoset
