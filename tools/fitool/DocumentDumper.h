//
// DocumentDumper.h
//
// Tool: fitool
// Module: DocumentDumper
//


#ifndef Fitool_DocumentDumper_INCLUDED
#define Fitool_DocumentDumper_INCLUDED


#include "Poco/Types.h"
#include <cstddef>
#include <iosfwd>


namespace Ixor {
namespace FastInfoset {
	class FastInfosetParser;
} }


namespace Fitool {


class DocumentDumper
	/// Lists a Fast Infoset document for people who debug one: the header
	/// (pre-header, optional components, initial vocabulary), one line per
	/// item indented by depth with its octet offset, each name and string
	/// marked literal or indexed (with its table and index) and with its
	/// encoding, then a summary by category and the size of every vocabulary
	/// table at the end.
	///
	/// The listing is the parser's own reading of the document: it accepts
	/// what the parser accepts, with the parser's limits, and fails where
	/// the parser fails, with its exception and message (which ends with
	/// the octet). What was listed before a fault stays listed.
{
public:
	DocumentDumper(std::ostream& out, const Ixor::FastInfoset::FastInfosetParser& settings);
		/// A listing with the settings of a parser: its limits, whether it
		/// loads external vocabularies, the vocabulary given to it in
		/// advance. The caller keeps the parser.

	~DocumentDumper();

	void dump(const char* data, std::size_t size);
		/// Lists the document that starts at data, in a block of size
		/// octets, and notes how many octets follow it. Each call lists one
		/// document afresh.

	Poco::UInt64 offset() const;
		/// The octet, counted from data, at which the last listing stopped:
		/// after a whole document, its size, so that the next document
		/// starts there.

private:
	DocumentDumper(const DocumentDumper&);
	DocumentDumper& operator = (const DocumentDumper&);

	class Listing;

	std::ostream& _out;
	const Ixor::FastInfoset::FastInfosetParser& _settings;
	Poco::UInt64   _stoppedAt;
};


} // namespace Fitool


#endif // Fitool_DocumentDumper_INCLUDED
