//
// BenchReport.h
//
// The documents under measurement and the tables printed at the end of a
// benchmark run.
//


#ifndef FastInfoset_BenchReport_INCLUDED
#define FastInfoset_BenchReport_INCLUDED


#include "BenchSupport.h"
#include <benchmark/benchmark.h>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>


namespace Bench {


struct Measure
{
	const char* id;
	const char* label;
	const char* notYet = nullptr;
		/// Why it cannot be measured yet; null when it can.
};


const std::vector<Measure>& measures();
	/// Every measurement of one document, in the order of the rows of a
	/// table. Benchmark names are MEASUREMENT/DOCUMENT.

const std::vector<Measure>& fixedCostMeasures();
	/// The costs that every document pays, measured on ALMOST_EMPTY_XML.
	/// Benchmark names are fixed/MEASUREMENT.

const std::vector<Measure>& manyDocumentMeasures();
	/// The small documents one after another through one parser (or
	/// writer), as a service reads and writes messages. Benchmark names
	/// are many/MEASUREMENT.

const std::vector<Measure>& vocabularyMeasures();
	/// Each small document that has samples of its kind (see
	/// vocabularySamples()) written and read with and without a vocabulary
	/// built from them; a new writer for every document, one parser for
	/// all, as a service reads its messages.
	/// Benchmark names are vocab/MEASUREMENT/DOCUMENT.

extern const char* const ALMOST_EMPTY_XML;

const std::size_t SMALL_DOCUMENT_SIZE = 100000;
	/// Documents of at most this many octets of XML are the small ones.


struct Document
	/// A document under measurement. Its texts, Fast Infoset form and
	/// events are loaded when a measurement first needs them and dropped
	/// when the next document starts; the sizes stay for the tables.
{
	std::string path;
	std::string name;

	std::string xml;
	std::string fi;
	std::unique_ptr<EventList> pEvents;

	std::size_t fileSize = 0;
		/// Known before the document is loaded.

	bool loaded = false;
	std::size_t xmlSize = 0;
	std::size_t fiSize = 0;
	std::size_t xmlGzipSize = 0;
	std::size_t fiGzipSize = 0;
	std::size_t eventCount = 0;
	std::size_t eventMemory = 0;
	std::size_t xmlWriterSize = 0;

	std::vector<std::string> vocabularySamples;
		/// Known before the document is loaded.
	std::size_t vocabularySize = 0;
		/// Octets of the vocabulary document built from the samples.
	std::size_t fiVocabularySize = 0;
		/// Octets of the document written naming that vocabulary.
	std::size_t fiWithoutVocabularySize = 0;
		/// Octets of the document written without it, as fiSize.

	std::map<std::string, Counts> counts;
		/// Per measurement, what one document gave.
	std::vector<std::string> checks;
	std::vector<std::string> problems;
		/// Failed checks: the measurement is not to be trusted.
	std::vector<std::string> notes;
		/// Findings about the output that do not spoil the measurement.
};


typedef std::vector<std::unique_ptr<Document>> Documents;


bool isSmall(const Document& doc);

std::vector<const Document*> smallDocuments(const Documents& documents);
	/// In the order given.


class TableReporter: public benchmark::ConsoleReporter
	/// Passes Google Benchmark's lines on to its output stream and, at the
	/// end, prints one table per document and a summary to tables.
	///
	/// Times are CPU time per document: the median when the runs are
	/// repeated, else the single run. A run may carry the counters
	/// "documents" (per iteration, when that is not one) and
	/// "allocations" (per iteration).
{
public:
	TableReporter(const Documents& documents, std::ostream& tables);

	void ReportRuns(const std::vector<Run>& reports);
	void Finalize();

private:
	struct Result
	{
		double seconds = 0;       // per document
		double cv = -1;           // coefficient of variation over repetitions
		double allocations = -1;  // per document; negative when not counted
		std::string error;
	};

	void printTable(const Document& doc);
	void printChecks(const Document& doc);
	void printSummary();
	void printRatios();
	void printSizes();
	void printSmallDocuments();
	void printVocabularies();
	void printDocumentsPerSecond(const std::vector<const Document*>& documents, const std::vector<Measure>& group);
	void printCostsPerDocument(const char* heading, const std::vector<Measure>& group);
	double seconds(const std::string& name) const;
		/// 0 when not measured or failed.
	double seconds(const Document& doc, const std::string& id) const;
	const Result* find(const std::string& name) const;
		/// By benchmark name; null when not measured.
	std::size_t failedChecks() const;

	static bool countsAgree(const Document& doc);
	static double ioOctets(const Document& doc, const std::string& id);

	const Documents& _documents;
	std::ostream& _tables;
	std::map<std::string, Result> _results;
};


} // namespace Bench


#endif // FastInfoset_BenchReport_INCLUDED
