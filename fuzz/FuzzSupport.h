//
// FuzzSupport.h
//
// Helpers shared by the fuzz targets: the outcome of a parse, an event log
// that digests what handlers receive, recording handlers and a stream
// buffer that hands out its octets a few at a time.
//


#ifndef FastInfoset_FuzzSupport_INCLUDED
#define FastInfoset_FuzzSupport_INCLUDED


#include "Ixor/FastInfoset/FISContentHandler.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Poco/DigestEngine.h"
#include "Poco/MD5Engine.h"
#include "Poco/SAX/Attributes.h"
#include "Poco/SAX/DTDHandler.h"
#include "Poco/SAX/LexicalHandler.h"
#include "Poco/SAX/XMLReader.h"
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <typeinfo>
#include <vector>


namespace FuzzSupport {


[[noreturn]] inline void fail(const std::string& what)
	/// A finding that is no crash of its own: print it and abort, so that
	/// libFuzzer keeps the input and a replay fails.
{
	std::fprintf(stderr, "FINDING: %s\n", what.c_str());
	std::fflush(stderr);
	std::abort();
}


template <class F>
std::string outcomeOf(F f)
	/// "ok", or the name and message of an exception that the library
	/// raises for bad input: one of its own family, or the host's I/O
	/// exception of a failed stream. Any other exception is a finding.
{
	try
	{
		f();
		return "ok";
	}
	catch (const Ixor::FastInfoset::FISException& exc)
	{
		return exc.displayText();
	}
	catch (const Ixor::IOException& exc)
	{
		return exc.displayText();
	}
	catch (const Ixor::Exception& exc)
	{
		fail(std::string("an exception outside the library's family: ") + exc.className() + ": " + exc.displayText());
	}
	catch (const std::exception& exc)
	{
		fail(std::string("an exception outside the library's family: ") + typeid(exc).name() + ": " + exc.what());
	}
}


template <class F>
std::string refusalOf(F f)
	/// "ok", or the name and message of the exception with which a writer
	/// refuses what it is given.
{
	try
	{
		f();
		return "ok";
	}
	catch (const Ixor::Exception& exc)
	{
		return exc.displayText();
	}
}


inline std::uint64_t hashOf(const std::uint8_t* data, std::size_t size)
	/// A seed for the choices a target makes, taken from its input so that a
	/// replay makes the same ones.
{
	std::uint64_t hash = 14695981039346656037ull;
	for (std::size_t i = 0; i < size; ++i) hash = (hash ^ data[i]) * 1099511628211ull;
	return hash;
}


inline void configure(Ixor::FastInfoset::FastInfosetParser& parser)
	/// A document may name any file as its external vocabulary: loading
	/// stays off, as it is by default.
{
	parser.setLoadExternalVocabularies(false);
}


class EventLog
	/// The events a handler received, as a digest over their kinds and
	/// fields, plus the first ones as text for the report of a difference.
	/// A run of text or binary data split over several events can be logged
	/// as one event, so that where the parser splits it does not matter.
{
public:
	static const std::size_t KEPT_EVENTS = 40;
	static const std::size_t KEPT_FIELD = 60;

	void event(const char* kind)
	{
		closeRun();
		begin(kind);
	}

	void field(const char* data, std::size_t length)
	{
		const std::uint64_t n = length;
		_digest.update(&n, sizeof(n));
		_digest.update(data, static_cast<unsigned>(length));
		if (_count <= KEPT_EVENTS)
		{
			_lines.back() += ' ';
			_lines.back().append(data, length < KEPT_FIELD ? length : KEPT_FIELD);
			if (length > KEPT_FIELD) _lines.back() += "...";
		}
	}

	void field(const std::string& text)
	{
		field(text.data(), text.size());
	}

	void run(const char* kind, const char* data, std::size_t length)
		/// Data that continues an open run of the same kind joins it.
	{
		if (!_pRun || std::strcmp(_pRun, kind) != 0)
		{
			closeRun();
			begin(kind);
			_pRun = kind;
			_runLength = 0;
		}
		_digest.update(data, static_cast<unsigned>(length));
		_runLength += length;
		if (_count <= KEPT_EVENTS && _lines.back().size() < KEPT_FIELD) _lines.back().append(data, length < KEPT_FIELD ? length : KEPT_FIELD);
	}

	const std::string& digest()
		/// Ends the log: events logged later are not part of the digest.
	{
		if (_final.empty())
		{
			closeRun();
			_final = std::to_string(_count) + ":" + Poco::DigestEngine::digestToHex(_digest.digest());
		}
		return _final;
	}

	std::string text() const
	{
		std::string all;
		for (const std::string& line: _lines) all += "  " + line + "\n";
		if (_count > KEPT_EVENTS) all += "  ...\n";
		return all;
	}

private:
	void begin(const char* kind)
	{
		++_count;
		_digest.update(kind, static_cast<unsigned>(std::strlen(kind) + 1));
		if (_count <= KEPT_EVENTS) _lines.push_back(kind);
	}

	void closeRun()
	{
		if (!_pRun) return;
		_digest.update(&_runLength, sizeof(_runLength));
		_pRun = nullptr;
	}

	Poco::MD5Engine          _digest;
	std::vector<std::string> _lines;
	std::size_t              _count = 0;
	const char*              _pRun = nullptr;
	std::uint64_t            _runLength = 0;
	std::string              _final;
};


struct RecordOptions
{
	bool roundTrip = false;
		/// Leaves out what a FastInfosetWriter changes on purpose when it
		/// writes the events again:
		/// - prefix mappings and qualified names: the writer declares the
		///   prefixes it needs where it needs them and makes some up;
		/// - CDATA boundaries: text that a CDATA section shares with an
		///   earlier chunk goes out as an index, which carries no algorithm;
		/// - how character data and binary data are split: adjacent events
		///   are one run, and characters() writes its text only up to the
		///   first zero octet, so text stops there and empty text is none;
		/// - absent and empty public and system identifiers, which the
		///   writer does not tell apart.
};


template <class Content>
class Recorder: public Content, public Ixor::XML::LexicalHandler, public Ixor::XML::DTDHandler
	/// Logs every event it receives. Content is the host's ContentHandler
	/// (the parser then reports typed values as text) or FISContentHandler.
{
public:
	explicit Recorder(RecordOptions options = RecordOptions()):
		_options(options)
	{
	}

	void attachTo(Ixor::XML::XMLReader& reader)
	{
		reader.setContentHandler(this);
		reader.setDTDHandler(this);
		reader.setProperty(Ixor::XML::XMLReader::PROPERTY_LEXICAL_HANDLER, static_cast<Ixor::XML::LexicalHandler*>(this));
	}

	EventLog log;

	// ContentHandler
	void setDocumentLocator(const Ixor::XML::Locator*) override {}
	void startDocument() override { log.event("startDocument"); }
	void endDocument() override { log.event("endDocument"); }

	void startElement(const std::string& uri, const std::string& localName, const std::string& qname, const Ixor::XML::Attributes& attributes) override
	{
		log.event("startElement");
		log.field(uri);
		log.field(localName);
		if (!_options.roundTrip) log.field(qname);
		const int count = attributes.getLength();
		for (int i = 0; i < count; ++i)
		{
			log.field(attributes.getURI(i));
			log.field(attributes.getLocalName(i));
			if (!_options.roundTrip)
			{
				log.field(attributes.getQName(i));
				log.field(attributes.getType(i));
			}
			log.field(attributes.getValue(i));
		}
	}

	void endElement(const std::string& uri, const std::string& localName, const std::string& qname) override
	{
		log.event("endElement");
		log.field(uri);
		log.field(localName);
		if (!_options.roundTrip) log.field(qname);
	}

	void characters(const char ch[], int start, int length) override
	{
		if (!_options.roundTrip)
		{
			log.event("characters");
			log.field(ch + start, static_cast<std::size_t>(length));
			return;
		}
		const char* p = ch + start;
		const void* pZero = std::memchr(p, 0, static_cast<std::size_t>(length));
		const std::size_t size = pZero ? static_cast<std::size_t>(static_cast<const char*>(pZero) - p) : static_cast<std::size_t>(length);
		if (size > 0) log.run("characters", p, size);
	}

	void ignorableWhitespace(const char ch[], int start, int length) override
	{
		characters(ch, start, length);
	}

	void processingInstruction(const std::string& target, const std::string& data) override
	{
		log.event("pi");
		log.field(target);
		log.field(data);
	}

	void startPrefixMapping(const std::string& prefix, const std::string& uri) override
	{
		if (_options.roundTrip) return;
		log.event("startPrefixMapping");
		log.field(prefix);
		log.field(uri);
	}

	void endPrefixMapping(const std::string& prefix) override
	{
		if (_options.roundTrip) return;
		log.event("endPrefixMapping");
		log.field(prefix);
	}

	void skippedEntity(const std::string& name) override
	{
		log.event("skippedEntity");
		log.field(name);
	}

	// LexicalHandler
	void startDTD(const std::string& name, const std::string& publicId, const std::string& systemId) override
	{
		log.event("startDTD");
		log.field(name);
		log.field(publicId);
		log.field(systemId);
	}

	void endDTD() override { log.event("endDTD"); }

	void startEntity(const std::string& name) override
	{
		log.event("startEntity");
		log.field(name);
	}

	void endEntity(const std::string& name) override
	{
		log.event("endEntity");
		log.field(name);
	}

	void startCDATA() override { if (!_options.roundTrip) log.event("startCDATA"); }
	void endCDATA() override { if (!_options.roundTrip) log.event("endCDATA"); }

	void comment(const char ch[], int start, int length) override
	{
		log.event("comment");
		log.field(ch + start, static_cast<std::size_t>(length));
	}

	// DTDHandler
	void notationDecl(const std::string& name, const std::string* publicId, const std::string* systemId) override
	{
		log.event("notation");
		log.field(name);
		optional(publicId);
		optional(systemId);
	}

	void unparsedEntityDecl(const std::string& name, const std::string* publicId, const std::string& systemId, const std::string& notationName) override
	{
		log.event("unparsedEntity");
		log.field(name);
		optional(publicId);
		log.field(systemId);
		log.field(notationName);
	}

protected:
	void optional(const std::string* pText)
	{
		if (pText) log.field(*pText);
		else if (_options.roundTrip) log.field("", 0);
		else log.field("(null)", 6);
	}

	RecordOptions _options;
};


typedef Recorder<Ixor::XML::ContentHandler> PlainRecorder;


class TypedRecorder: public Recorder<Ixor::FastInfoset::FISContentHandler>
	/// Also logs the typed values; floating-point values by their bits.
{
public:
	explicit TypedRecorder(RecordOptions options = RecordOptions()):
		Recorder<Ixor::FastInfoset::FISContentHandler>(options)
	{
	}

	void binaryData(const char* data, std::size_t length) override
	{
		if (_options.roundTrip) log.run("binaryData", data, length);
		else
		{
			log.event("binaryData");
			log.field(data, length);
		}
	}

	void encodedData(short value) override { number("short", value); }
	void encodedData(int value) override { number("int", value); }
	void encodedData(long value) override { number("long", value); }
	void encodedData(bool value) override { number("bool", value ? 1 : 0); }

	void encodedData(float value) override
	{
		std::uint32_t bits;
		std::memcpy(&bits, &value, sizeof(bits));
		number("float", static_cast<long long>(bits));
	}

	void encodedData(double value) override
	{
		std::uint64_t bits;
		std::memcpy(&bits, &value, sizeof(bits));
		log.event("double");
		log.field(std::to_string(bits));
	}

	void encodedData(const Ixor::UUID& value) override
	{
		log.event("uuid");
		log.field(value.toString());
	}

private:
	void number(const char* kind, long long value)
	{
		log.event(kind);
		log.field(std::to_string(value));
	}
};


class TrickleBuf: public std::streambuf
	/// An input stream buffer over a memory block that makes 1 to 7 octets
	/// available at a time, chosen by a seeded generator, so that every
	/// read of the stream is assembled from many small ones.
{
public:
	TrickleBuf(const char* pData, std::size_t size, std::uint64_t seed):
		_pData(pData),
		_pEnd(pData + size),
		_random(static_cast<std::minstd_rand::result_type>(seed % 2147483646u + 1))
	{
		setg(nullptr, nullptr, nullptr);
	}

protected:
	int_type underflow() override
	{
		if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
		const char* p = egptr() ? egptr() : _pData;
		if (p == _pEnd) return traits_type::eof();
		std::size_t count = 1 + _random() % 7;
		if (count > static_cast<std::size_t>(_pEnd - p)) count = static_cast<std::size_t>(_pEnd - p);
		char* pBegin = const_cast<char*>(p);
		setg(pBegin, pBegin, pBegin + count);
		return traits_type::to_int_type(*p);
	}

private:
	const char*      _pData;
	const char*      _pEnd;
	std::minstd_rand _random;
};


} // namespace FuzzSupport


#endif // FastInfoset_FuzzSupport_INCLUDED
