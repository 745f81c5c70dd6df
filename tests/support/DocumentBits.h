//
// DocumentBits.h
//
// Documents put together field by field, for what the writer never writes:
// bad input, and items only other writers produce.
//


#ifndef FastInfoset_DocumentBits_INCLUDED
#define FastInfoset_DocumentBits_INCLUDED


#include "Ixor/FastInfoset/BitStreamWriter.h"
#include <cstddef>
#include <functional>
#include <sstream>
#include <string>


namespace TestSupport {


class DocumentBits
	/// Each call appends a field and returns the builder for the next one.
{
public:
	DocumentBits();

	DocumentBits(const DocumentBits&) = delete;
	DocumentBits& operator = (const DocumentBits&) = delete;

	DocumentBits& header();
		/// The identification and version, and the padding bit in front
		/// of the presence bits of the header's optional parts.

	DocumentBits& bits(unsigned int value, int count);
		/// The low count bits of value.

	DocumentBits& raw(const std::string& octets);
		/// Octets as they are.

	DocumentBits& integer(unsigned int value);
		/// An integer in the form of the current bit position.

	DocumentBits& length(unsigned long length);
		/// The length of an octet string, without its octets.

	DocumentBits& string(const std::string& text);
		/// A non-empty octet string: its length, then its octets.

	DocumentBits& literal(const std::string& text);
		/// An identifying string literal at an octet boundary: a 0 bit,
		/// then the string.

	DocumentBits& sequence(unsigned int length);
		/// The length of a sequence.

	DocumentBits& pad();
		/// 0 bits up to the next octet boundary.

	DocumentBits& repeat(std::size_t count, const std::function<void(DocumentBits&)>& item);

	std::string done();
		/// The octets, the last one padded with 0 bits.

private:
	std::ostringstream                  _out;
	Ixor::FastInfoset::BitStreamWriter  _writer;
};


} // namespace TestSupport


#endif // FastInfoset_DocumentBits_INCLUDED
