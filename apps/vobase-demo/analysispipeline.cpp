#include "analysispipeline.h"

#include "analysisitem.h"

#include <bxbase/bxexception.h>
#include <bxbase/bxstreamwriteasciistringt.h>

#include <algorithm>
#include <cmath>
#include <numeric>

CAnalysisPipeline::CAnalysisPipeline(CDocument& document, const VoMessageHandlerBase& progressTarget)
    : m_document(document), m_progressTarget(progressTarget)
{
    add("load", [this] {
        m_samples = m_document.GetSamples();
        if (m_samples.empty())
            BX_THROW(BxException, "CAnalysisPipeline load", L"the document has no samples");
    });
    add("mean", [this] { m_results.mean = Mean(m_samples); });
    add("range", [this] { Range(m_samples, m_results.min, m_results.max); });
    add("rms", [this] { m_results.rms = Rms(m_samples); });
    add("crossings", [this] { m_results.crossings = Crossings(m_samples); });
    add("merge", [this] { m_document.SetResults(m_results); });
    for (const char* analysis : {"mean", "range", "rms", "crossings"}) {
        m_manager.AddDependency("load", analysis);
        m_manager.AddDependency(analysis, "merge");
    }
}

void CAnalysisPipeline::add(const std::string& name, std::function<void()> work)
{
    m_manager.Add(name.c_str(), BxSmartPointer<IWorkItem>(new CAnalysisItem(name, std::move(work), m_progressTarget)));
    m_names.push_back(name);
}

void CAnalysisPipeline::Start()
{
    m_manager.Start("load", ITaskManager::eP_Normal);
}

bool CAnalysisPipeline::IsFinished()
{
    return std::none_of(m_names.begin(), m_names.end(), [this](const std::string& name) {
        const ITaskManager::EComputationState state = m_manager.GetStatus(name.c_str());
        return state == ITaskManager::eCS_Scheduled;
    });
}

std::size_t CAnalysisPipeline::GetComputedCount()
{
    return static_cast<std::size_t>(std::count_if(m_names.begin(), m_names.end(), [this](const std::string& name) {
        return m_manager.GetStatus(name.c_str()) == ITaskManager::eCS_Computed;
    }));
}

std::string CAnalysisPipeline::DumpGraphviz()
{
    BxStreamWriteASCIIStringT<std::string> text;
    m_manager.DumpGraph(text, true);
    return text.GetString();
}

double CAnalysisPipeline::Mean(const std::vector<double>& samples)
{
    return samples.empty() ? 0 : std::accumulate(samples.begin(), samples.end(), 0.0) / samples.size();
}

void CAnalysisPipeline::Range(const std::vector<double>& samples, double& min, double& max)
{
    const auto [low, high] = std::minmax_element(samples.begin(), samples.end());
    min = low == samples.end() ? 0 : *low;
    max = high == samples.end() ? 0 : *high;
}

double CAnalysisPipeline::Rms(const std::vector<double>& samples)
{
    if (samples.empty())
        return 0;
    const double squares = std::inner_product(samples.begin(), samples.end(), samples.begin(), 0.0);
    return std::sqrt(squares / samples.size());
}

std::int32_t CAnalysisPipeline::Crossings(const std::vector<double>& samples)
{
    std::int32_t count = 0;
    for (std::size_t i = 1; i < samples.size(); ++i)
        count += (samples[i - 1] < 0) != (samples[i] < 0);
    return count;
}

CDocument::SResults CAnalysisPipeline::Analyse(const std::vector<double>& samples)
{
    CDocument::SResults results;
    results.mean = Mean(samples);
    Range(samples, results.min, results.max);
    results.rms = Rms(samples);
    results.crossings = Crossings(samples);
    return results;
}
