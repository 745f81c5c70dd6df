#include "EventRecorder.h"
#include "TestSupport.h"
#include "Poco/NumberFormatter.h"
#include "Poco/SAX/Attributes.h"
#include <algorithm>
#include <cmath>
#include <cstring>
#include <sstream>


namespace TestSupport {


namespace {


const std::uint64_t FNV_OFFSET = 14695981039346656037ull;


std::uint64_t hashLine(const std::string& line, std::uint64_t hash)
	/// The length goes first, so that lines cannot be told apart only by
	/// where one ends: a text may hold a newline.
{
	const std::uint64_t size = line.size();
	hash = hashOf(reinterpret_cast<const char*>(&size), sizeof(size), hash);
	return hashOf(line.data(), line.size(), hash);
}


template <class T, class Bits>
std::string floatingText(T value, int precision)
	/// Enough digits to tell every value apart; NaN with its bits, since
	/// their payloads differ.
{
	std::ostringstream text;
	if (std::isnan(value))
	{
		Bits bits;
		std::memcpy(&bits, &value, sizeof(bits));
		text << "nan:" << std::hex << bits;
	}
	else
	{
		text.precision(precision);
		text << value;
	}
	return text.str();
}


} // namespace


class EventRecorder::PlainContent: public Ixor::XML::ContentHandler
	/// The recorder as a handler that is not a FISContentHandler.
{
public:
	explicit PlainContent(EventRecorder& recorder):
		_recorder(recorder)
	{
	}

	void setDocumentLocator(const Ixor::XML::Locator*) override {}
	void startDocument() override { _recorder.startDocument(); }
	void endDocument() override { _recorder.endDocument(); }
	void startElement(const std::string& uri, const std::string& localName, const std::string& qname, const Ixor::XML::Attributes& attributes) override
	{
		_recorder.startElement(uri, localName, qname, attributes);
	}
	void endElement(const std::string& uri, const std::string& localName, const std::string& qname) override { _recorder.endElement(uri, localName, qname); }
	void characters(const char ch[], int start, int length) override { _recorder.characters(ch, start, length); }
	void ignorableWhitespace(const char ch[], int start, int length) override { _recorder.ignorableWhitespace(ch, start, length); }
	void processingInstruction(const std::string& target, const std::string& data) override { _recorder.processingInstruction(target, data); }
	void startPrefixMapping(const std::string& prefix, const std::string& uri) override { _recorder.startPrefixMapping(prefix, uri); }
	void endPrefixMapping(const std::string& prefix) override { _recorder.endPrefixMapping(prefix); }
	void skippedEntity(const std::string& name) override { _recorder.skippedEntity(name); }

private:
	EventRecorder& _recorder;
};


EventRecorder::EventRecorder():
	EventRecorder(Options())
{
}


EventRecorder::EventRecorder(Options options):
	lines(_lines),
	_options(options),
	_hash(FNV_OFFSET)
{
}


EventRecorder::~EventRecorder()
{
}


void EventRecorder::attachPlainTo(Ixor::XML::XMLReader& reader)
{
	attachTo(reader);
	if (!_pPlain) _pPlain.reset(new PlainContent(*this));
	reader.setContentHandler(_pPlain.get());
}


std::string EventRecorder::text() const
{
	std::string all;
	for (std::size_t i = 0; i < _lines.size(); ++i)
	{
		if (_dropped && i == _open) all += "...\n";
		all += _lines[i] + "\n";
	}
	return all;
}


std::string EventRecorder::digest() const
{
	std::uint64_t hash = _hash;
	for (std::size_t i = _open; i < _lines.size(); ++i) hash = hashLine(_lines[i], hash);
	return std::to_string(_count) + ":" + Poco::NumberFormatter::formatHex(hash, 16);
}


void EventRecorder::add(const std::string& line)
{
	_lines.push_back(line);
	++_count;
	while (_lines.size() - _open > OPEN_LINES)
	{
		_hash = hashLine(_lines[_open], _hash);
		if (_open < _options.keptLines) ++_open;
		else
		{
			_lines.erase(_lines.begin() + static_cast<std::ptrdiff_t>(_open));
			_dropped = true;
		}
	}
}


void EventRecorder::dropLast()
{
	poco_assert(_lines.size() > _open);
	_lines.pop_back();
	--_count;
}


void EventRecorder::clear()
{
	_lines.clear();
	_open = 0;
	_count = 0;
	_dropped = false;
	_hash = FNV_OFFSET;
	_inDTD = false;
}


bool EventRecorder::mergesText() const
{
	return comparesWithXML() || _options.roundTrip;
}


bool EventRecorder::comparesWithXML() const
{
	return _options.comparableText || _options.comparable;
}


bool EventRecorder::leavesOutNameDetails() const
	/// The attributes' qualified names and types, and endPrefixMapping.
{
	return _options.comparable || _options.roundTrip;
}


void EventRecorder::addToRun(const char* kind, const std::string& text)
	/// Text that continues a line of its kind joins it.
{
	const std::size_t length = std::strlen(kind);
	if (_lines.size() > _open && _lines.back().size() > length && _lines.back().compare(0, length, kind) == 0
		&& _lines.back()[length] == ' ')
	{
		_lines.back() += text;
	}
	else add(std::string(kind) + " " + text);
}


std::string EventRecorder::qualified(const std::string& qname) const
{
	if (_options.roundTrip || _options.blankQualifiedNames) return std::string();
	if (_options.comparable && qname.find(':') == std::string::npos) return std::string();
	return qname;
}


std::string EventRecorder::identifier(const std::string* pId) const
{
	if (pId) return *pId;
	return _options.roundTrip ? std::string() : std::string("(null)");
}


void EventRecorder::startDocument()
{
	add("startDocument");
}


void EventRecorder::endDocument()
{
	add("endDocument");
}


void EventRecorder::startElement(const std::string& uri, const std::string& localName, const std::string& qname, const Ixor::XML::Attributes& attributes)
{
	const bool details = !leavesOutNameDetails();
	std::vector<std::string> items;
	for (int i = 0; i < attributes.getLength(); ++i)
	{
		std::string item = " {" + attributes.getURI(i) + "}" + attributes.getLocalName(i);
		if (details) item += "[" + qualified(attributes.getQName(i)) + "|" + attributes.getType(i) + "]";
		items.push_back(item + "=" + attributes.getValue(i));
	}
	if (_options.sortAttributes) std::sort(items.begin(), items.end());
	std::string line = "startElement {" + uri + "}" + localName + " " + qualified(qname);
	for (const std::string& item: items) line += item;
	add(line);
}


void EventRecorder::endElement(const std::string& uri, const std::string& localName, const std::string& qname)
{
	add("endElement {" + uri + "}" + localName + " " + qualified(qname));
}


void EventRecorder::characters(const char ch[], int start, int length)
{
	const char* p = ch + start;
	std::size_t size = length > 0 ? static_cast<std::size_t>(length) : 0;
	if (!mergesText())
	{
		add("characters " + std::string(p, size));
		return;
	}
	const void* pZero = std::memchr(p, 0, size);
	if (pZero) size = static_cast<std::size_t>(static_cast<const char*>(pZero) - p);
	if (size > 0) addToRun("characters", std::string(p, size));
}


void EventRecorder::ignorableWhitespace(const char ch[], int start, int length)
{
	if (mergesText()) characters(ch, start, length);
	else add("ignorableWhitespace " + std::string(ch + start, length > 0 ? static_cast<std::size_t>(length) : 0));
}


void EventRecorder::processingInstruction(const std::string& target, const std::string& data)
{
	add("pi " + target + " " + data);
}


void EventRecorder::startPrefixMapping(const std::string& prefix, const std::string& uri)
{
	if (!_options.roundTrip) add("startPrefixMapping " + prefix + "=" + uri);
}


void EventRecorder::endPrefixMapping(const std::string& prefix)
{
	if (!leavesOutNameDetails()) add("endPrefixMapping " + prefix);
}


void EventRecorder::skippedEntity(const std::string& name)
{
	add("skippedEntity " + name);
}


void EventRecorder::binaryData(const char* data, std::size_t length)
{
	std::string hex;
	for (std::size_t i = 0; i < length; ++i) hex += Poco::NumberFormatter::formatHex(static_cast<unsigned char>(data[i]), 2);
	if (mergesText()) addToRun("binaryData", hex);
	else add("binaryData " + hex);
}


void EventRecorder::encodedData(short value)
{
	add("short " + std::to_string(value));
}


void EventRecorder::encodedData(int value)
{
	add("int " + std::to_string(value));
}


void EventRecorder::encodedData(long value)
{
	add("long " + std::to_string(value));
}


void EventRecorder::encodedData(bool value)
{
	add(std::string("bool ") + (value ? "true" : "false"));
}


void EventRecorder::encodedData(float value)
{
	add("float " + floatingText<float, std::uint32_t>(value, 9));
}


void EventRecorder::encodedData(double value)
{
	add("double " + floatingText<double, std::uint64_t>(value, 17));
}


void EventRecorder::encodedData(const Ixor::UUID& value)
{
	add("uuid " + value.toString());
}


void EventRecorder::startDTD(const std::string& name, const std::string& publicId, const std::string& systemId)
{
	_inDTD = true;
	add("startDTD " + (comparesWithXML() ? std::string() : name) + " public=" + publicId + " system=" + systemId);
}


void EventRecorder::endDTD()
{
	_inDTD = false;
	add("endDTD");
}


void EventRecorder::startEntity(const std::string& name)
{
	if (!comparesWithXML()) add("startEntity " + name);
}


void EventRecorder::endEntity(const std::string& name)
{
	if (!comparesWithXML()) add("endEntity " + name);
}


void EventRecorder::startCDATA()
{
	if (_options.roundTrip) return;
	if (comparesWithXML() && _lines.size() > _open && _lines.back() == "endCDATA") dropLast();
	else add("startCDATA");
}


void EventRecorder::endCDATA()
{
	if (!_options.roundTrip) add("endCDATA");
}


void EventRecorder::comment(const char ch[], int start, int length)
{
	if (comparesWithXML() && _inDTD) return;
	add("comment " + std::string(ch + start, length > 0 ? static_cast<std::size_t>(length) : 0));
}


void EventRecorder::notationDecl(const std::string& name, const std::string* publicId, const std::string* systemId)
{
	add("notation " + name + " public=" + identifier(publicId) + " system=" + identifier(systemId));
}


void EventRecorder::unparsedEntityDecl(const std::string& name, const std::string* publicId, const std::string& systemId, const std::string& notationName)
{
	add("unparsedEntity " + name + " public=" + identifier(publicId) + " system=" + systemId + " notation=" + notationName);
}


std::string firstDifference(const std::vector<std::string>& expected, const std::vector<std::string>& actual)
{
	std::size_t i = 0;
	while (i < expected.size() && i < actual.size() && expected[i] == actual[i]) ++i;
	if (i == expected.size() && i == actual.size()) return std::string();
	std::string report = "line " + std::to_string(i) + "\n";
	for (std::size_t j = i > 2 ? i - 2 : 0; j < i + 3; ++j)
	{
		report += "  expected: " + (j < expected.size() ? expected[j].substr(0, 200) : std::string("(end)")) + "\n";
		report += "  actual:   " + (j < actual.size() ? actual[j].substr(0, 200) : std::string("(end)")) + "\n";
	}
	return report;
}


std::vector<std::string> comparableXMLEvents(const std::string& xml, bool stripWhitespace, std::string* pDoctypeName)
{
	EventRecorder::Options options;
	options.comparable = true;
	options.sortAttributes = true;
	EventRecorder recorder(options);
	std::istringstream in(xml);
	parseXML(in, &recorder, &recorder, &recorder, stripWhitespace);
	if (pDoctypeName)
	{
		const std::string::size_type doctype = xml.find("<!DOCTYPE ");
		*pDoctypeName = doctype == std::string::npos ? std::string()
			: xml.substr(doctype + 10, xml.find_first_of(" >[", doctype + 10) - doctype - 10);
	}
	return recorder.lines;
}


std::uint64_t hashOf(const char* data, std::size_t size, std::uint64_t hash)
{
	for (std::size_t i = 0; i < size; ++i) hash = (hash ^ static_cast<unsigned char>(data[i])) * 1099511628211ull;
	return hash;
}


} // namespace TestSupport
