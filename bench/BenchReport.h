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
};


const std::vector<Measure>& measures();
	/// Every measurement, in the order of the rows of a table.


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

	bool loaded = false;
	std::size_t xmlSize = 0;
	std::size_t fiSize = 0;
	std::size_t xmlGzipSize = 0;
	std::size_t fiGzipSize = 0;
	std::size_t eventCount = 0;
	std::size_t eventMemory = 0;
	std::size_t xmlWriterSize = 0;

	std::map<std::string, Counts> counts;
		/// Per measurement, what one document gave.
	std::vector<std::string> checks;
	std::vector<std::string> problems;
		/// Failed checks: the measurement is not to be trusted.
	std::vector<std::string> notes;
		/// Findings about the output that do not spoil the measurement.
};


typedef std::vector<std::unique_ptr<Document>> Documents;


class TableReporter: public benchmark::ConsoleReporter
	/// Passes Google Benchmark's lines on to its output stream and, at the
	/// end, prints one table per document and a summary to tables.
	///
	/// Times are CPU time per document: the median when the runs are
	/// repeated, else the single run.
{
public:
	TableReporter(const Documents& documents, std::ostream& tables);

	void ReportRuns(const std::vector<Run>& reports);
	void Finalize();

private:
	struct Result
	{
		double seconds = 0;
		double cv = -1;       // coefficient of variation over repetitions
		std::string error;
	};

	typedef std::map<std::string, Result> Results;

	void printTable(const Document& doc, const Results& results);
	void printChecks(const Document& doc);
	void printSummary();
	double seconds(const std::string& doc, const std::string& id) const;
		/// 0 when not measured or failed.
	std::size_t failedChecks() const;

	static bool countsAgree(const Document& doc);
	static const Result* find(const Results& results, const std::string& id);
	static double ioOctets(const Document& doc, const std::string& id);

	const Documents& _documents;
	std::ostream& _tables;
	std::map<std::string, Results> _results;
};


} // namespace Bench


#endif // FastInfoset_BenchReport_INCLUDED
