#include "Ixor/FastInfoset/HexEncoding.h"
#include "Ixor/FastInfoset/FISContentHandler.h"
#include "EncodingSupport.h"
#include "Poco/HexBinaryDecoder.h"
#include "Poco/HexBinaryEncoder.h"
#include "Poco/MemoryStream.h"
#include "Poco/SAX/ContentHandler.h"
#include <ostream>


namespace Ixor {
namespace FastInfoset {


namespace
{
	const char* const ZERO_LENGTH  = "Zero-length data for hex encoding";
	const char* const INVALID_DATA = "Invalid hex-encoded data";


	bool decodeText(const std::string& text, std::string* pOctets, std::size_t& count)
		/// Runs the host decoder over text, storing the octets when pOctets
		/// is given. Returns false when the decoder stops on a character it
		/// refuses (including a missing last digit).
	{
		Ixor::MemoryInputStream in(text.data(), static_cast<std::streamsize>(text.size()));
		Ixor::HexBinaryDecoder decoder(in);
		// Two digits give one octet, so asking for one more octet than the
		// text can hold makes every read end at the decoder's end or error.
		const std::size_t capacity = text.size()/2 + 1;
		count = 0;
		if (pOctets)
		{
			pOctets->resize(capacity);
			decoder.read(&(*pOctets)[0], static_cast<std::streamsize>(capacity));
			count = static_cast<std::size_t>(decoder.gcount());
			pOctets->resize(count);
		}
		else
		{
			char buffer[1024];
			do
			{
				decoder.read(buffer, sizeof(buffer));
				count += static_cast<std::size_t>(decoder.gcount());
			}
			while (decoder.good());
		}
		return !decoder.bad();
	}


	void appendText(const char* pOctets, std::size_t length, std::string& text)
	{
		EncodingSupport::StringAppendBuf buf(text);
		std::ostream out(&buf);
		Ixor::HexBinaryEncoder encoder(out);
		encoder.rdbuf()->setLineLength(0);
		encoder.rdbuf()->setUppercase(true);
		encoder.write(pOctets, static_cast<std::streamsize>(length));
		encoder.close();
	}
}


HexEncoding::HexEncoding()
{
}


HexEncoding::HexEncoding(const char* data, std::size_t length):
	Encoding(data, data ? length : 0)
{
	if (_content.empty()) throw FISEncodingException(ZERO_LENGTH);
}


HexEncoding::HexEncoding(const std::string& text)
{
	if (text.empty()) throw FISEncodingException(ZERO_LENGTH);
	std::size_t count = 0;
	if (!decodeText(text, &_content, count)) throw FISEncodingException(INVALID_DATA);
	// White space alone decodes to nothing; such an object could not be
	// written, so it is refused here like empty data.
	if (_content.empty()) throw FISEncodingException(ZERO_LENGTH);
}


HexEncoding::~HexEncoding()
{
}


unsigned int HexEncoding::type() const
{
	return 1;
}


bool HexEncoding::merge(const Encoding& other)
{
	if (other.type() != type()) return false;
	_content.append(other.content());
	return true;
}


void HexEncoding::write(BitStreamWriter& writer) const
{
	poco_assert(!_content.empty());
	Encoder::nonEmptyOctetString(writer, _content);
}


void HexEncoding::decode(BitStreamReader& reader, std::string& text)
{
	text.clear();
	unsigned long length = 0;
	Decoder::nonEmptyStringLength(reader, length);
	std::string scratch;
	const unsigned char* p = EncodingSupport::readOctets(reader, length, scratch);
	text.reserve(2*length);
	appendText(reinterpret_cast<const char*>(p), length, text);
}


void HexEncoding::decode(const std::string& octets, std::string& text)
{
	if (&octets == &text)
	{
		const std::string copy(octets);
		decode(copy, text);
		return;
	}
	text.clear();
	text.reserve(2*octets.size());
	appendText(octets.data(), octets.size(), text);
}


Ixor::AutoPtr<Encoding> HexEncoding::decode(BitStreamReader& reader)
{
	Ixor::AutoPtr<HexEncoding> pEncoding(new HexEncoding);
	Decoder::nonEmptyOctetString(reader, pEncoding->_content);
	return pEncoding;
}


Int32 HexEncoding::check(const std::string& text)
{
	if (text.empty()) return -1;
	std::size_t count = 0;
	if (!decodeText(text, nullptr, count)) return -1;
	return EncodingSupport::octetCount(count);
}


void HexEncoding::encode(BitStreamWriter& writer, const std::string& text)
{
	Ixor::AutoPtr<HexEncoding> pEncoding(new HexEncoding(text));
	pEncoding->write(writer);
}


DecodeMethod HexEncoding::decodeMethod() const
{
	return &HexEncoding::decode;
}


CheckMethod HexEncoding::checkMethod() const
{
	return &HexEncoding::check;
}


EncodeMethod HexEncoding::encodeMethod() const
{
	return &HexEncoding::encode;
}


void HexEncoding::handle(Ixor::XML::ContentHandler* pHandler) const
{
	if (!pHandler) return;
	std::string text;
	decode(_content, text);
	pHandler->characters(text.data(), 0, static_cast<int>(text.size()));
}


void HexEncoding::handle(FISContentHandler* pHandler) const
{
	if (pHandler) pHandler->binaryData(_content.data(), _content.size());
}


void HexEncoding::createContent()
{
}


} } // namespace Ixor::FastInfoset
