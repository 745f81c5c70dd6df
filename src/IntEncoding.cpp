#include "Ixor/FastInfoset/IntEncoding.h"
#include "Ixor/FastInfoset/FISContentHandler.h"
#include "EncodingSupport.h"
#include "Poco/NumberFormatter.h"
#include "Poco/NumberParser.h"
#include <limits>


namespace Ixor {
namespace FastInfoset {


namespace
{
	const char* const EMPTY_DATA   = "Illegal (empty) data for IntEncoding";
	const char* const VALUE_STRING = "Illegal value string for IntEncoding";
	const char* const SIZE_ENTRY   = "Illegal size entry for Ixor::Int32 value";
}


IntEncoding::IntEncoding():
	_values()
{
}


IntEncoding::IntEncoding(int value):
	_values(1, value)
{
}


IntEncoding::IntEncoding(const std::vector<int>& values):
	_values(values)
{
	if (_values.empty()) throw FISEncodingException(EMPTY_DATA);
}


IntEncoding::IntEncoding(const std::string& text)
{
	if (text.empty()) throw FISEncodingException(EMPTY_DATA);
	parse(text, _values);
	if (_values.empty()) throw FISEncodingException(VALUE_STRING);
}


IntEncoding::~IntEncoding()
{
}


void IntEncoding::parse(const std::string& text, std::vector<int>& values)
{
	// Only canonical decimals come back unchanged from the formatter: no
	// plus sign, no leading zeros, no minus zero, no white space.
	EncodingSupport::parseList(text, values, [](const std::string& piece, std::string& canonical, int& value)
	{
		Int64 parsed = 0;
		if (!Ixor::NumberParser::tryParse64(piece, parsed)) return false;
		canonical.clear();
		Ixor::NumberFormatter::append(canonical, parsed);
		if (canonical != piece) return false;
		if (parsed < std::numeric_limits<int>::min() || parsed > std::numeric_limits<int>::max()) return false;
		value = static_cast<int>(parsed);
		return true;
	});
}


unsigned int IntEncoding::type() const
{
	return 4;
}


bool IntEncoding::merge(const Encoding& other)
{
	const IntEncoding* pOther = other.type() == type() ? dynamic_cast<const IntEncoding*>(&other) : nullptr;
	if (!pOther) return false;
	EncodingSupport::appendCopy(_values, pOther->_values);
	return true;
}


void IntEncoding::write(BitStreamWriter& writer) const
{
	writeValues(writer, _values);
}


void IntEncoding::writeValues(BitStreamWriter& writer, const std::vector<int>& values)
{
	EncodingSupport::writeBigEndian(writer, values);
}


void IntEncoding::decode(BitStreamReader& reader, std::string& text)
{
	text.clear();
	// The one decoder of the family that reports a bad size as FISException.
	const std::size_t length = EncodingSupport::readValueLength<FISException>(reader, sizeof(Int32), SIZE_ENTRY);
	std::string scratch;
	const unsigned char* p = EncodingSupport::readOctets(reader, length, scratch);
	text.reserve(length*3);
	for (const unsigned char* const pEnd = p + length; p != pEnd; p += sizeof(Int32))
	{
		if (!text.empty()) text += ' ';
		Ixor::NumberFormatter::append(text, EncodingSupport::loadBigEndian<int>(p));
	}
}


void IntEncoding::decode(BitStreamReader& reader, std::vector<int>& values)
{
	values.clear();
	const std::size_t length = EncodingSupport::readValueLength<FISEncodingException>(reader, sizeof(Int32), SIZE_ENTRY);
	std::string scratch;
	const unsigned char* p = EncodingSupport::readOctets(reader, length, scratch);
	EncodingSupport::appendFromBigEndian(p, length/sizeof(Int32), values);
}


Ixor::AutoPtr<Encoding> IntEncoding::decode(BitStreamReader& reader)
{
	Ixor::AutoPtr<IntEncoding> pEncoding(new IntEncoding);
	decode(reader, pEncoding->_values);
	pEncoding->createContent();
	return pEncoding;
}


Int32 IntEncoding::check(const std::string& text)
{
	std::vector<int> values;
	parse(text, values);
	return EncodingSupport::octetCount(values.size()*sizeof(Int32));
}


void IntEncoding::encode(BitStreamWriter& writer, const std::string& text)
{
	// As IntEncoding(text).write(writer), without the heap object.
	if (text.empty()) throw FISEncodingException(EMPTY_DATA);
	std::vector<int> values;
	parse(text, values);
	if (values.empty()) throw FISEncodingException(VALUE_STRING);
	writeValues(writer, values);
}


DecodeMethod IntEncoding::decodeMethod() const
{
	return &IntEncoding::decode;
}


CheckMethod IntEncoding::checkMethod() const
{
	return &IntEncoding::check;
}


EncodeMethod IntEncoding::encodeMethod() const
{
	return &IntEncoding::encode;
}


void IntEncoding::handle(FISContentHandler* pHandler) const
{
	if (!pHandler) return;
	for (int value: _values) pHandler->encodedData(value);
}


void IntEncoding::createContent()
{
	_content.clear();
	for (std::size_t i = 0; i < _values.size(); ++i)
	{
		if (i) _content += ' ';
		Ixor::NumberFormatter::append(_content, _values[i]);
	}
}


} } // namespace Ixor::FastInfoset
