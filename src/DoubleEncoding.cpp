#include "Ixor/FastInfoset/DoubleEncoding.h"
#include "Ixor/FastInfoset/FISContentHandler.h"
#include "EncodingSupport.h"
#include "Poco/NumberFormatter.h"
#include "Poco/NumberParser.h"
#include <limits>


namespace Ixor {
namespace FastInfoset {


namespace
{
	const char* const EMPTY_DATA   = "Illegal (empty) data for DoubleEncoding";
	const char* const VALUE_STRING = "Illegal value string for DoubleEncoding";
	const char* const SIZE_ENTRY   = "Illegal size entry for double value";
}


DoubleEncoding::DoubleEncoding():
	_values()
{
}


DoubleEncoding::DoubleEncoding(double value):
	_values(1, value)
{
}


DoubleEncoding::DoubleEncoding(const std::vector<double>& values):
	_values(values)
{
	if (_values.empty()) throw FISEncodingException(EMPTY_DATA);
}


DoubleEncoding::DoubleEncoding(const std::string& text)
{
	if (text.empty()) throw FISEncodingException(EMPTY_DATA);
	parse(text, _values);
	if (_values.empty()) throw FISEncodingException(VALUE_STRING);
}


DoubleEncoding::~DoubleEncoding()
{
}


void DoubleEncoding::parse(const std::string& text, std::vector<double>& values)
{
	// The formatter used here is the one createContent() uses, so every
	// text produced is accepted again.
	EncodingSupport::parseList(text, values, [](const std::string& piece, std::string& canonical, double& value)
	{
		double parsed = 0;
		if (!Ixor::NumberParser::tryParseFloat(piece, parsed)) return false;
		canonical.clear();
		Ixor::NumberFormatter::append(canonical, parsed);
		if (canonical != piece) return false;
		value = parsed;
		return true;
	});
}


unsigned int DoubleEncoding::type() const
{
	return 8;
}


bool DoubleEncoding::merge(const Encoding& other)
{
	const DoubleEncoding* pOther = other.type() == type() ? dynamic_cast<const DoubleEncoding*>(&other) : nullptr;
	if (!pOther) return false;
	EncodingSupport::appendCopy(_values, pOther->_values);
	return true;
}


void DoubleEncoding::write(BitStreamWriter& writer) const
{
	writeValues(writer, _values);
}


void DoubleEncoding::writeValues(BitStreamWriter& writer, const std::vector<double>& values)
{
	EncodingSupport::writeBigEndian(writer, values);
}


void DoubleEncoding::decode(BitStreamReader& reader, std::string& text)
{
	text.clear();
	const std::size_t length = EncodingSupport::readValueLength<FISEncodingException>(reader, sizeof(double), SIZE_ENTRY);
	std::string scratch;
	const unsigned char* p = EncodingSupport::readOctets(reader, length, scratch);
	text.reserve(length*4);
	for (const unsigned char* const pEnd = p + length; p != pEnd; p += sizeof(double))
	{
		if (!text.empty()) text += ' ';
		Ixor::NumberFormatter::append(text, EncodingSupport::loadBigEndian<double>(p));
	}
}


void DoubleEncoding::decode(BitStreamReader& reader, std::vector<double>& values)
{
	values.clear();
	const std::size_t length = EncodingSupport::readValueLength<FISEncodingException>(reader, sizeof(double), SIZE_ENTRY);
	std::string scratch;
	const unsigned char* p = EncodingSupport::readOctets(reader, length, scratch);
	EncodingSupport::appendFromBigEndian(p, length/sizeof(double), values);
}


Ixor::AutoPtr<Encoding> DoubleEncoding::decode(BitStreamReader& reader)
{
	Ixor::AutoPtr<DoubleEncoding> pEncoding(new DoubleEncoding);
	decode(reader, pEncoding->_values);
	pEncoding->createContent();
	return pEncoding;
}


Int32 DoubleEncoding::check(const std::string& text)
{
	std::vector<double> values;
	parse(text, values);
	return EncodingSupport::octetCount(values.size()*sizeof(double));
}


void DoubleEncoding::encode(BitStreamWriter& writer, const std::string& text)
{
	// As DoubleEncoding(text).write(writer), without the heap object.
	if (text.empty()) throw FISEncodingException(EMPTY_DATA);
	std::vector<double> values;
	parse(text, values);
	if (values.empty()) throw FISEncodingException(VALUE_STRING);
	writeValues(writer, values);
}


DecodeMethod DoubleEncoding::decodeMethod() const
{
	return &DoubleEncoding::decode;
}


CheckMethod DoubleEncoding::checkMethod() const
{
	return &DoubleEncoding::check;
}


EncodeMethod DoubleEncoding::encodeMethod() const
{
	return &DoubleEncoding::encode;
}


void DoubleEncoding::handle(FISContentHandler* pHandler) const
{
	if (!pHandler) return;
	for (double value: _values) pHandler->encodedData(value);
}


void DoubleEncoding::createContent()
{
	_content.clear();
	for (std::size_t i = 0; i < _values.size(); ++i)
	{
		if (i) _content += ' ';
		Ixor::NumberFormatter::append(_content, _values[i]);
	}
}


} } // namespace Ixor::FastInfoset
