//
// DWordEncoding.h
//
// Library: FastInfoset
// Module:  DWordEncoding
//


#ifndef FastInfoset_DWordEncoding_INCLUDED
#define FastInfoset_DWordEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Encoding.h"
#include <cstddef>
#include <string>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API DWordEncoding: public Encoding
	/// Binary data with a base64 text form (algorithm 2). content() holds the
	/// raw octets themselves, which are also the octets written; the base64
	/// text, in one line, is produced on demand. The writer's binaryData()
	/// produces these values.
{
public:
	typedef Ixor::AutoPtr<DWordEncoding> Ptr;

	DWordEncoding();
		/// No data; the decode function reads into its content().

	DWordEncoding(const char* data, std::size_t length);
		/// Copies the octets. Throws FISEncodingException "Zero-length data
		/// for dword encoding" when length is 0.

	explicit DWordEncoding(const std::string& text);
		/// Decodes base64 text. Throws FISEncodingException "Zero-length data
		/// for dword encoding" for a text that yields no octets and "Invalid
		/// base64-encoded data" for a text that the host decoder refuses.

	unsigned int type() const override;
		/// 2.

	bool merge(const Encoding& other) override;
		/// Appends the octets of another DWordEncoding and returns true;
		/// returns false for any other type.

	void write(BitStreamWriter& writer) const override;
		/// Writes the octets as a non-empty octet string; no data is a
		/// programming error (assertion).

	static void decode(BitStreamReader& reader, std::string& text);
		/// Reads one octet string into its base64 text.

	static void decode(const std::string& octets, std::string& text);
		/// Sets text to the base64 form of octets, in one line.

	static Ixor::AutoPtr<Encoding> decode(BitStreamReader& reader);
		/// Reads one octet string into a new DWordEncoding.

	static Int32 check(const std::string& text);
		/// The number of octets that text decodes to, or -1 when it is empty
		/// or the host decoder refuses it.

	static void encode(BitStreamWriter& writer, const std::string& text);
		/// Writes the octets of text; throws as the text constructor does.

	DecodeMethod decodeMethod() const override;
	CheckMethod checkMethod() const override;
	EncodeMethod encodeMethod() const override;

	void handle(Ixor::XML::ContentHandler* pHandler) const override;
		/// One characters() call with the base64 text.

	void handle(FISContentHandler* pHandler) const override;
		/// One binaryData() call with the octets.

	void createContent() override;
		/// Nothing: the octets are the value.

protected:
	~DWordEncoding();
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_DWordEncoding_INCLUDED
