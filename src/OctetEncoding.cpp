#include "Ixor/FastInfoset/OctetEncoding.h"
#include "Ixor/FastInfoset/FISContentHandler.h"
#include "AlgorithmTable.h"
#include "EncodingSupport.h"
#include "Poco/Base64Decoder.h"
#include "Poco/Base64Encoder.h"
#include "Poco/HexBinaryDecoder.h"
#include "Poco/HexBinaryEncoder.h"
#include "Poco/MemoryStream.h"
#include "Poco/SAX/ContentHandler.h"
#include <ostream>


namespace Ixor {
namespace FastInfoset {


//
// The kinds of octets
//
// A traits class provides:
//
//   TYPE                  the algorithm index
//   ZERO_LENGTH, INVALID_DATA
//                         the messages
//   TextDecoder, TextEncoder
//                         the host's stream codec of the text form
//   setUp(encoder)        sets the encoder to the text form
//   maxOctets(length)     the most octets a text of length characters
//                         decodes to
//   textLength(count)     the characters of the text of count octets
//
template <>
struct OctetTraits<HexText>
{
	static constexpr unsigned int TYPE = AlgorithmTable::HEXADECIMAL;
	static constexpr const char* ZERO_LENGTH  = "Zero-length data for hex encoding";
	static constexpr const char* INVALID_DATA = "Invalid hex-encoded data";

	typedef Ixor::HexBinaryDecoder TextDecoder;
	typedef Ixor::HexBinaryEncoder TextEncoder;

	static void setUp(TextEncoder& encoder)
	{
		encoder.rdbuf()->setLineLength(0);
		encoder.rdbuf()->setUppercase(true);
	}

	static std::size_t maxOctets(std::size_t length)
	{
		// Two digits give one octet.
		return length/2;
	}

	static std::size_t textLength(std::size_t count)
	{
		return 2*count;
	}
};


template <>
struct OctetTraits<Base64Text>
{
	static constexpr unsigned int TYPE = AlgorithmTable::BASE64;
	static constexpr const char* ZERO_LENGTH  = "Zero-length data for dword encoding";
	static constexpr const char* INVALID_DATA = "Invalid base64-encoded data";

	typedef Ixor::Base64Decoder TextDecoder;
	typedef Ixor::Base64Encoder TextEncoder;

	static void setUp(TextEncoder& encoder)
	{
		encoder.rdbuf()->setLineLength(0);
	}

	static std::size_t maxOctets(std::size_t length)
	{
		// Four characters give at most three octets.
		return (length + 3)/4*3;
	}

	static std::size_t textLength(std::size_t count)
	{
		return (count + 2)/3*4;
	}
};


namespace EncodingSupport {


template <class Traits>
bool decodeText(const std::string& text, std::string* pOctets, std::size_t& count)
	/// Runs the host decoder over text, storing the octets when pOctets is
	/// given. Returns false when the decoder stops on a character it refuses
	/// (including an incomplete last digit or group).
{
	Ixor::MemoryInputStream in(text.data(), static_cast<std::streamsize>(text.size()));
	typename Traits::TextDecoder decoder(in);
	// Asking for one more octet than the text can hold makes every read end
	// at the decoder's end or error.
	const std::size_t capacity = Traits::maxOctets(text.size()) + 1;
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


template <class Traits>
void appendText(const char* pOctets, std::size_t length, std::string& text)
{
	StringAppendBuf buf(text);
	std::ostream out(&buf);
	typename Traits::TextEncoder encoder(out);
	Traits::setUp(encoder);
	encoder.write(pOctets, static_cast<std::streamsize>(length));
	encoder.close();
}


} // namespace EncodingSupport


template <class V>
OctetEncoding<V>::OctetEncoding()
{
}


template <class V>
OctetEncoding<V>::OctetEncoding(const char* data, std::size_t length):
	Encoding(data, data ? length : 0)
{
	if (_content.empty()) throw FISEncodingException(Traits::ZERO_LENGTH);
}


template <class V>
OctetEncoding<V>::OctetEncoding(const std::string& text)
{
	if (text.empty()) throw FISEncodingException(Traits::ZERO_LENGTH);
	std::size_t count = 0;
	if (!EncodingSupport::decodeText<Traits>(text, &_content, count)) throw FISEncodingException(Traits::INVALID_DATA);
	// White space alone decodes to nothing; such an object could not be
	// written, so it is refused here like empty data.
	if (_content.empty()) throw FISEncodingException(Traits::ZERO_LENGTH);
}


template <class V>
OctetEncoding<V>::~OctetEncoding()
{
}


template <class V>
unsigned int OctetEncoding<V>::type() const
{
	return Traits::TYPE;
}


template <class V>
bool OctetEncoding<V>::merge(const Encoding& other)
{
	const OctetEncoding* pOther = other.type() == type() ? dynamic_cast<const OctetEncoding*>(&other) : nullptr;
	if (!pOther) return false;
	_content.append(pOther->_content);
	_text.clear();
	return true;
}


template <class V>
void OctetEncoding<V>::append(const char* data, std::size_t length)
{
	if (!length) return;
	_content.append(data, length);
	_text.clear();
}


template <class V>
void OctetEncoding<V>::clear()
{
	_content.clear();
	_text.clear();
}


template <class V>
void OctetEncoding<V>::write(BitStreamWriter& writer) const
{
	poco_assert(!_content.empty());
	Encoder::nonEmptyOctetString(writer, _content);
}


template <class V>
void OctetEncoding<V>::decode(BitStreamReader& reader, std::string& text)
{
	text.clear();
	unsigned long length = 0;
	Decoder::nonEmptyStringLength(reader, length);
	std::string scratch;
	const unsigned char* p = EncodingSupport::readOctets(reader, length, scratch);
	text.reserve(Traits::textLength(length));
	EncodingSupport::appendText<Traits>(reinterpret_cast<const char*>(p), length, text);
}


template <class V>
void OctetEncoding<V>::decode(const std::string& octets, std::string& text)
{
	if (&octets == &text)
	{
		const std::string copy(octets);
		decode(copy, text);
		return;
	}
	text.clear();
	text.reserve(Traits::textLength(octets.size()));
	EncodingSupport::appendText<Traits>(octets.data(), octets.size(), text);
}


template <class V>
Ixor::AutoPtr<Encoding> OctetEncoding<V>::decode(BitStreamReader& reader)
{
	Ixor::AutoPtr<OctetEncoding> pEncoding(new OctetEncoding);
	OctetEncoding& value = *pEncoding;
	Decoder::nonEmptyOctetString(reader, value._content);
	return pEncoding;
}


template <class V>
Int32 OctetEncoding<V>::check(const std::string& text)
{
	if (text.empty()) return -1;
	std::size_t count = 0;
	if (!EncodingSupport::decodeText<Traits>(text, nullptr, count)) return -1;
	return EncodingSupport::octetCount(count);
}


template <class V>
void OctetEncoding<V>::encode(BitStreamWriter& writer, const std::string& text)
{
	Ixor::AutoPtr<OctetEncoding> pEncoding(new OctetEncoding(text));
	pEncoding->write(writer);
}


template <class V>
DecodeMethod OctetEncoding<V>::decodeMethod() const
{
	return &OctetEncoding::decode;
}


template <class V>
CheckMethod OctetEncoding<V>::checkMethod() const
{
	return &OctetEncoding::check;
}


template <class V>
EncodeMethod OctetEncoding<V>::encodeMethod() const
{
	return &OctetEncoding::encode;
}


template <class V>
void OctetEncoding<V>::handle(Ixor::XML::ContentHandler* pHandler) const
{
	if (!pHandler) return;
	const std::string& text = content();
	pHandler->characters(text.data(), 0, static_cast<int>(text.size()));
}


template <class V>
void OctetEncoding<V>::handle(FISContentHandler* pHandler) const
{
	if (pHandler) pHandler->binaryData(_content.data(), _content.size());
}


template <class V>
const std::string& OctetEncoding<V>::content() const
{
	// The text of some octets is never empty: empty means not built yet.
	if (_text.empty() && !_content.empty()) decode(_content, _text);
	return _text;
}


template <class V>
std::string& OctetEncoding<V>::content()
{
	static_cast<const OctetEncoding&>(*this).content();
	return _text;
}


template <class V>
void OctetEncoding<V>::createContent()
{
	_text.clear();
	content();
}


template class OctetEncoding<HexText>;
template class OctetEncoding<Base64Text>;


} } // namespace Ixor::FastInfoset
