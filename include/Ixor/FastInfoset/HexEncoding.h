//
// HexEncoding.h
//
// Library: FastInfoset
// Module:  HexEncoding
//


#ifndef FastInfoset_HexEncoding_INCLUDED
#define FastInfoset_HexEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Encoding.h"
#include <cstddef>
#include <string>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API HexEncoding: public Encoding
	/// Binary data with a hexadecimal text form (algorithm 1). content()
	/// holds the raw octets themselves, which are also the octets written;
	/// the upper-case hexadecimal text is produced on demand.
{
public:
	typedef Ixor::AutoPtr<HexEncoding> Ptr;

	HexEncoding();
		/// No data; the decode function reads into its content().

	HexEncoding(const char* data, std::size_t length);
		/// Copies the octets. Throws FISEncodingException "Zero-length data
		/// for hex encoding" when length is 0.

	explicit HexEncoding(const std::string& text);
		/// Decodes hexadecimal text. Throws FISEncodingException "Zero-length
		/// data for hex encoding" for a text that yields no octets and
		/// "Invalid hex-encoded data" for a text that the host decoder
		/// refuses.

	unsigned int type() const override;
		/// 1.

	bool merge(const Encoding& other) override;
		/// Appends the octets of another HexEncoding and returns true;
		/// returns false for any other type.

	void write(BitStreamWriter& writer) const override;
		/// Writes the octets as a non-empty octet string; no data is a
		/// programming error (assertion).

	static void decode(BitStreamReader& reader, std::string& text);
		/// Reads one octet string into its hexadecimal text.

	static void decode(const std::string& octets, std::string& text);
		/// Sets text to the upper-case hexadecimal form of octets, two digits
		/// per octet, nothing between them.

	static Ixor::AutoPtr<Encoding> decode(BitStreamReader& reader);
		/// Reads one octet string into a new HexEncoding.

	static Int32 check(const std::string& text);
		/// The number of octets that text decodes to, or -1 when it is empty
		/// or the host decoder refuses it.

	static void encode(BitStreamWriter& writer, const std::string& text);
		/// Writes the octets of text; throws as the text constructor does.

	DecodeMethod decodeMethod() const override;
	CheckMethod checkMethod() const override;
	EncodeMethod encodeMethod() const override;

	void handle(Ixor::XML::ContentHandler* pHandler) const override;
		/// One characters() call with the hexadecimal text.

	void handle(FISContentHandler* pHandler) const override;
		/// One binaryData() call with the octets.

	void createContent() override;
		/// Nothing: the octets are the value.

protected:
	~HexEncoding();
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_HexEncoding_INCLUDED
