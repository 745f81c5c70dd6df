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


template <class E>
struct OctetTraits;
	/// What an octet class E adds to OctetEncoding: its algorithm index,
	/// its messages and the host codec of its text form. Specialized in the
	/// source file of E; not for use outside the library.
	///
	/// The header of E declares E with FastInfoset_API before it names
	/// OctetEncoding for E, which the library instantiates once (extern
	/// template): the base's vtable and type information are then exported
	/// with E.


template <class E>
class FastInfoset_API OctetEncoding: public Encoding
	/// The common part of the binary data classes HexEncoding and
	/// DWordEncoding: octets() holds the raw octets, which are also the
	/// octets written; content() is their text form in E's host codec,
	/// built when it is first asked for, so that a typed-data handler, which
	/// takes the octets, never pays for it.
	///
	/// The messages below are those of E, as its header names them: the
	/// zero-length message and the invalid-data message.
{
public:
	unsigned int type() const override;
		/// E's algorithm index.

	const std::string& octets() const;
		/// The raw octets.

	bool merge(const Encoding& other) override;
		/// Appends the octets of another E and returns true; returns false
		/// for any other type.

	void append(const char* data, std::size_t length);
		/// Appends length octets in place, as merging an E of them would.

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
		/// Reads one octet string into a new E.

	static Int32 check(const std::string& text);
		/// The number of octets that text decodes to, or -1 when it is empty
		/// or the host decoder refuses it.

	static void encode(BitStreamWriter& writer, const std::string& text);
		/// Writes the octets of text; throws as E's text constructor does.

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

	~OctetEncoding();

private:
	typedef OctetTraits<E> Traits;

	// The inherited _content holds the octets.
	mutable std::string _text;   // the text form, or empty until it is asked for
};


//
// inlines
//
template <class E>
inline const std::string& OctetEncoding<E>::octets() const
{
	return _content;
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_OctetEncoding_INCLUDED
