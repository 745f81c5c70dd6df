//
// Encoding.h
//
// Library: FastInfoset
// Module:  Encoding
//


#ifndef FastInfoset_Encoding_INCLUDED
#define FastInfoset_Encoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include <cstddef>
#include <string>


namespace Ixor {
namespace FastInfoset {


class BitStreamReader;
class BitStreamWriter;
class Encoding;
class FISContentHandler;


typedef void (*EncodeMethod)(BitStreamWriter& writer, const std::string& text);
	/// Writes the octet form of text as a length-prefixed non-empty octet
	/// string at the writer's position.

typedef Int32 (*CheckMethod)(const std::string& text);
	/// The number of value octets text would take, or 0 (or less) when the
	/// algorithm cannot encode it.

typedef Ixor::AutoPtr<Encoding> (*DecodeMethod)(BitStreamReader& reader);
	/// Reads one length-prefixed octet string and returns its value, with
	/// its text form built.


class FastInfoset_API Encoding: public Ixor::RefCountedObject
	/// A typed value of an encoding algorithm: its algorithm index, its
	/// values, its octet form and its text form. Always held through
	/// Ixor::AutoPtr<Encoding>.
{
public:
	typedef Ixor::AutoPtr<Encoding> Ptr;

	Encoding();
	explicit Encoding(const std::string& content);
	Encoding(const char* pContent, std::size_t length);

	virtual unsigned int type() const = 0;
		/// The algorithm index.

	virtual bool merge(const Encoding& other) = 0;
		/// Appends other when it is of the same algorithm and returns true;
		/// otherwise returns false and changes nothing.

	virtual void write(BitStreamWriter& writer) const = 0;
		/// Writes the length-prefixed octet string of this value.

	virtual DecodeMethod decodeMethod() const = 0;
	virtual CheckMethod checkMethod() const = 0;
	virtual EncodeMethod encodeMethod() const = 0;

	virtual void handle(Ixor::XML::ContentHandler* pHandler) const;
		/// Reports the text form in one characters() call; nothing for a
		/// null handler.

	virtual void handle(FISContentHandler* pHandler) const = 0;
		/// Reports the typed values; nothing for a null handler.

	virtual const std::string& content() const;
		/// The text form.

	virtual std::string& content();
		/// The modifiable text form.

	virtual void createContent() = 0;
		/// Rebuilds the text form from the typed values.

protected:
	virtual ~Encoding();

	std::string _content;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_Encoding_INCLUDED
