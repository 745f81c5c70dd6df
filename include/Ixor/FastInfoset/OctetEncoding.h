//
// OctetEncoding.h
//
// Library: FastInfoset
// Module:  OctetEncoding
//


#ifndef FastInfoset_OctetEncoding_INCLUDED
#define FastInfoset_OctetEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Encoding.h"
#include <cstddef>
#include <string>


namespace Ixor {
namespace FastInfoset {


template <class V>
struct OctetTraits;
	/// What the octets named V are: their algorithm index, their messages
	/// and the host codec of their text form. Specialized in the library's
	/// source file of V; not for use outside the library.


template <class V>
class FastInfoset_API OctetEncoding: public Encoding
	/// The binary data HexEncoding and DWordEncoding, one template for
	/// both: V names the algorithm. octets() holds the raw octets, which
	/// are also the octets written; content() is their text form in the
	/// host codec of V, built when it is first asked for, so that a
	/// typed-data handler, which takes the octets, never pays for it.
	///
	/// Each is declared below with V as FastInfoset_API and the library's
	/// one instantiation for it (extern template), so that the vtable and
	/// the type information are the library's.
	///
	/// The messages below are those of V, as its declaration names them:
	/// the zero-length message and the invalid-data message.
{
public:
	typedef Ixor::AutoPtr<OctetEncoding> Ptr;

	OctetEncoding();
		/// No data; the decode function reads into its octets.

	OctetEncoding(const char* data, std::size_t length);
		/// Copies the octets. Throws FISEncodingException with the
		/// zero-length message when length is 0.

	explicit OctetEncoding(const std::string& text);
		/// Decodes text with the host decoder. Throws FISEncodingException
		/// with the zero-length message for a text that yields no octets
		/// and with the invalid-data message for a text that the decoder
		/// refuses.

	unsigned int type() const override;
		/// The algorithm index of V.

	const std::string& octets() const;
		/// The raw octets.

	bool merge(const Encoding& other) override;
		/// Appends the octets of another value of V and returns true;
		/// returns false for any other type.

	void append(const char* data, std::size_t length);
		/// Appends length octets in place, as merging a value of them would.

	void clear();
		/// Drops the octets, keeping the capacity, so that a writer can
		/// reuse one object instead of allocating one per call. An emptied
		/// value must be given octets (append(), merge()) before it is
		/// written.

	void write(BitStreamWriter& writer) const override;
		/// Writes the octets as a non-empty octet string; no data is a
		/// programming error (assertion).

	static void decode(BitStreamReader& reader, std::string& text);
		/// Reads one octet string into its text form.

	static void decode(const std::string& octets, std::string& text);
		/// Sets text to the text form of octets.

	static Ixor::AutoPtr<Encoding> decode(BitStreamReader& reader);
		/// Reads one octet string into a new value.

	static Int32 check(const std::string& text);
		/// The number of octets that text decodes to, or -1 when it is empty
		/// or the host decoder refuses it.

	static void encode(BitStreamWriter& writer, const std::string& text);
		/// Writes the octets of text; throws as the text constructor does.

	DecodeMethod decodeMethod() const override;
	CheckMethod checkMethod() const override;
	EncodeMethod encodeMethod() const override;

	void handle(Ixor::XML::ContentHandler* pHandler) const override;
		/// One characters() call with the text form; nothing for a null
		/// handler.

	void handle(FISContentHandler* pHandler) const override;
		/// One binaryData() call with the octets; nothing for a null
		/// handler.

	const std::string& content() const override;
	std::string& content() override;
		/// The text form of the octets, built on the first call after they
		/// changed. Changing it does not change the octets.

	void createContent() override;
		/// Builds the text form of the octets.

protected:
	~OctetEncoding();

private:
	typedef OctetTraits<V> Traits;

	// The inherited _content holds the octets.
	mutable std::string _text;   // the text form, or empty until it is asked for
};


//
// inlines
//
template <class V>
inline const std::string& OctetEncoding<V>::octets() const
{
	return _content;
}


//
// The kinds of octets
//
// Each is the template for a text form; its header includes this one. The
// library instantiates the template once for each (extern template).
//
struct FastInfoset_API HexText;
struct FastInfoset_API Base64Text;


extern template class OctetEncoding<HexText>;
extern template class OctetEncoding<Base64Text>;


typedef OctetEncoding<HexText> HexEncoding;
	/// Binary data with a hexadecimal text form (algorithm 1). octets()
	/// holds the raw octets, which are also the octets written; content()
	/// is the upper-case hexadecimal text, two digits per octet and nothing
	/// between them.
	///
	/// Its messages are "Zero-length data for hex encoding" and "Invalid
	/// hex-encoded data".


typedef OctetEncoding<Base64Text> DWordEncoding;
	/// Binary data with a base64 text form (algorithm 2). octets() holds the
	/// raw octets, which are also the octets written; content() is the
	/// base64 text in one line. The writer's binaryData() produces these
	/// values.
	///
	/// Its messages are "Zero-length data for dword encoding" and "Invalid
	/// base64-encoded data".


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_OctetEncoding_INCLUDED
