//
// ValueListEncoding.h
//
// Library: FastInfoset
// Module:  ValueListEncoding
//


#ifndef FastInfoset_ValueListEncoding_INCLUDED
#define FastInfoset_ValueListEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Encoding.h"
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


template <class E>
struct ValueListTraits;
	/// What a list class E adds to ValueListEncoding: its algorithm index,
	/// its messages, its text rule and its octet layout. Specialized in the
	/// source file of E; not for use outside the library.
	///
	/// The header of E declares E with FastInfoset_API before it names
	/// ValueListEncoding for E, which the library instantiates once
	/// (extern template): the base's vtable and type information are then
	/// exported with E.


template <class E, class T>
class FastInfoset_API ValueListEncoding: public Encoding
	/// The common part of the typed lists ShortEncoding, IntEncoding,
	/// LongEncoding, BoolEncoding, FloatEncoding, DoubleEncoding and
	/// UUIDEncoding: E is the list class, T the type of one value. A list
	/// holds at least one value, except after clear(). Its text form is the
	/// text of each value, separated by single spaces; it is built by
	/// createContent().
	///
	/// The messages below are those of E, as its header names them: the
	/// empty-data message ("Illegal (empty) data for E"), the value-string
	/// message ("Illegal value string for E") and the size message.
{
public:
	static void parse(const std::string& text, std::vector<T>& values);
		/// Fills values from text, or leaves it empty when the text is not a
		/// list of values in E's text form separated by single spaces.

	unsigned int type() const override;
		/// E's algorithm index.

	bool merge(const Encoding& other) override;
		/// Appends the values of another E and returns true; returns false
		/// and changes nothing for any other type. The text form is not
		/// rebuilt.

	void append(T value);
		/// Appends one value in place, as merging an E of that value would.
		/// The text form is not rebuilt.

	void clear();
		/// Drops every value and the text form, keeping the capacity, so
		/// that a writer can reuse one object instead of allocating one per
		/// value. An emptied list must be given a value (append(), merge())
		/// before it is written.

	void write(BitStreamWriter& writer) const override;
		/// Writes the values as one length-prefixed octet string; an empty
		/// list is a programming error (assertion).

	static void decode(BitStreamReader& reader, std::string& text);
		/// Reads one value string into its text form. A length that does not
		/// fit E's octet layout throws FISEncodingException with the size
		/// message (FISException for IntEncoding alone).

	static void decode(BitStreamReader& reader, std::vector<T>& values);
		/// Reads one value string into values (cleared first). A length that
		/// does not fit E's octet layout throws FISEncodingException with
		/// the size message.

	static Ixor::AutoPtr<Encoding> decode(BitStreamReader& reader);
		/// Reads one value string into a new E with its text form. A string
		/// without values throws FISEncodingException with the empty-data
		/// message.

	static Int32 check(const std::string& text);
		/// The number of octets the values of text take, or 0 when parse()
		/// refuses the text.

	static void encode(BitStreamWriter& writer, const std::string& text);
		/// Writes the values of text; throws as E's text constructor does.

	DecodeMethod decodeMethod() const override;
	CheckMethod checkMethod() const override;
	EncodeMethod encodeMethod() const override;

	using Encoding::handle;

	void handle(FISContentHandler* pHandler) const override;
		/// One encodedData(T) call per value, in order; nothing for a null
		/// handler.

	void createContent() override;

protected:
	ValueListEncoding();
		/// An empty list, for decode() to fill.

	explicit ValueListEncoding(T value);

	explicit ValueListEncoding(const std::vector<T>& values);
		/// Throws FISEncodingException with the empty-data message for an
		/// empty vector.

	explicit ValueListEncoding(const std::string& text);
		/// Parses text. Throws FISEncodingException with the empty-data
		/// message for an empty text and the value-string message for a text
		/// that parse() refuses.

	~ValueListEncoding();

private:
	typedef ValueListTraits<E> Traits;

	std::vector<T> _values;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_ValueListEncoding_INCLUDED
