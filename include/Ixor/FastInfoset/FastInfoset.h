//
// FastInfoset.h
//
// Library: FastInfoset
// Module:  FastInfoset
//
// The library's module header, included first by every other header.
// It defines FastInfoset_API and maps the host framework onto the Ixor
// names that the library and its users write: Ixor::AutoPtr, Ixor::UUID,
// Ixor::XML::ContentHandler and so on are the POCO C++ Libraries' own
// classes, not copies of them.
//


#ifndef FastInfoset_FastInfoset_INCLUDED
#define FastInfoset_FastInfoset_INCLUDED


#include "Poco/Foundation.h"
#include "Poco/Types.h"
#include "Poco/Exception.h"
#include "Poco/Bugcheck.h"
#include "Poco/AutoPtr.h"
#include "Poco/RefCountedObject.h"
#include "Poco/UUID.h"
#include "Poco/Hash.h"
#include "Poco/HashFunction.h"
#include "Poco/String.h"
#include "Poco/XML/XML.h"
#include "Poco/XML/XMLString.h"


#if defined(_WIN32) && defined(FastInfoset_DLL)
	#if defined(FastInfoset_EXPORTS)
		#define FastInfoset_API __declspec(dllexport)
	#else
		#define FastInfoset_API __declspec(dllimport)
	#endif
#elif defined(__GNUC__) || defined(__clang__)
	#define FastInfoset_API __attribute__ ((visibility ("default")))
#else
	#define FastInfoset_API
#endif


// The few small functions that every octet or name goes through: inlined
// even where a large source file has used up the compiler's budget for
// inlining.
#if defined(__GNUC__) || defined(__clang__)
	#define FastInfoset_ALWAYS_INLINE inline __attribute__ ((always_inline))
#elif defined(_MSC_VER)
	#define FastInfoset_ALWAYS_INLINE __forceinline
#else
	#define FastInfoset_ALWAYS_INLINE inline
#endif


//
// Host classes that only some headers need are declared here and
// included by the sources that use them, so that a user of the writer
// does not pay for the host's URI, stream and text-codec headers.
//
namespace Poco {
	class NumberParser;
	class NumberFormatter;
	class StringTokenizer;
	class HexBinaryEncoder;
	class HexBinaryDecoder;
	class Base64Encoder;
	class Base64Decoder;
	class UTF8Encoding;
	class UTF16Encoding;
	class TextIterator;
	class TextConverter;
	class URI;
	class URIStreamOpener;
	class Path;
	class MemoryInputStream;
	class NullOutputStream;
namespace XML {
	class XMLReader;
	class ContentHandler;
	class LexicalHandler;
	class DTDHandler;
	class DeclHandler;
	class EntityResolver;
	class EntityResolverImpl;
	class ErrorHandler;
	class Attributes;
	class AttributesImpl;
	class InputSource;
	class Locator;
	class NamespaceSupport;
	class Name;
	class SAXParser;
	class WhitespaceFilter;
	class XMLWriter;
	class DefaultHandler;
	class SAXException;
	class SAXNotRecognizedException;
	class SAXNotSupportedException;
	class SAXParseException;
	class XMLException;
} } // namespace Poco::XML


namespace Ixor {


// Integer types
using Poco::Int8;
using Poco::UInt8;
using Poco::Int16;
using Poco::UInt16;
using Poco::Int32;
using Poco::UInt32;
using Poco::Int64;
using Poco::UInt64;

// Reference counting
using Poco::AutoPtr;
using Poco::RefCountedObject;

// Exceptions and assertions
using Poco::Exception;
using Poco::LogicException;
using Poco::AssertionViolationException;
using Poco::NullPointerException;
using Poco::RuntimeException;
using Poco::InvalidArgumentException;
using Poco::InvalidAccessException;
using Poco::PoolOverflowException;
using Poco::IOException;
using Poco::FileNotFoundException;
using Poco::SyntaxException;
using Poco::Bugcheck;

// Values, text and codecs
using Poco::UUID;
using Poco::hash;
using Poco::HashFunction;
using Poco::toUpper;
using Poco::toLower;
using Poco::NumberParser;
using Poco::NumberFormatter;
using Poco::StringTokenizer;
using Poco::HexBinaryEncoder;
using Poco::HexBinaryDecoder;
using Poco::Base64Encoder;
using Poco::Base64Decoder;
using Poco::UTF8Encoding;
using Poco::UTF16Encoding;
using Poco::TextIterator;
using Poco::TextConverter;

// Resources and streams
using Poco::URI;
using Poco::URIStreamOpener;
using Poco::Path;
using Poco::MemoryInputStream;
using Poco::NullOutputStream;


namespace XML {


using Poco::XML::XMLChar;
using Poco::XML::XMLString;
using Poco::XML::XMLReader;
using Poco::XML::ContentHandler;
using Poco::XML::LexicalHandler;
using Poco::XML::DTDHandler;
using Poco::XML::DeclHandler;
using Poco::XML::EntityResolver;
using Poco::XML::EntityResolverImpl;
using Poco::XML::ErrorHandler;
using Poco::XML::Attributes;
using Poco::XML::AttributesImpl;
using Poco::XML::InputSource;
using Poco::XML::Locator;
using Poco::XML::NamespaceSupport;
using Poco::XML::Name;
using Poco::XML::SAXParser;
using Poco::XML::WhitespaceFilter;
using Poco::XML::XMLWriter;
using Poco::XML::DefaultHandler;
using Poco::XML::SAXException;
using Poco::XML::SAXNotRecognizedException;
using Poco::XML::SAXNotSupportedException;
using Poco::XML::SAXParseException;
using Poco::XML::XMLException;


} // namespace XML


namespace FastInfoset {


struct DontInitialize
	/// Tag that selects the constructors of tables and vocabularies which
	/// leave out the index-0 placeholder and the pre-loaded entries.
{
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_FastInfoset_INCLUDED
