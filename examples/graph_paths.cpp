// A small road map as a directed, weighted graph: the cheapest route with
// Dijkstra's method, an order of the places with a topological sort, and the
// graph as Graphviz text (render it with `dot -Tsvg`; nodes show as indices).
#include <vobase/graphs/vograph.h>
#include <vobase/graphs/vographnode.h>
#include <vobase/graphs/vographpathiterator.h>
#include <vobase/graphs/vompgraphtopologicalsort.h>
#include <vobase/graphs/vompgraphtoshortestpath.h>

#include <bxbase/bxstreamwriteasciistringt.h>
#include <bxbase/bxstringconvert.h>

#include <algorithm>
#include <cstdio>
#include <string>

int main()
{
    VoGraph graph;  // owns its nodes; node k gets index k
    VoGraphNode* places[5];
    const char* names[5] = {"depot", "bridge", "market", "mill", "harbour"};
    for (int i = 0; i < 5; ++i)
        graph.InsertNode(places[i] = new VoGraphNode(names[i]));
    auto road = [&](int from, int to, float km) { places[from]->AddConnection(*places[to], km); };
    road(0, 1, 4.0f), road(0, 2, 1.5f), road(2, 1, 2.0f), road(1, 3, 3.0f), road(2, 3, 6.0f), road(3, 4, 2.5f);

    VoMpGraphToShortestPath route;
    route.SetInput(graph, *places[0], *places[4]);
    if (!route.Compute())
        return 1;
    std::string path;
    for (VoGraphPathIterator it = route.GetOutput(); it.HasMoreElements();)
        path += (path.empty() ? "" : " -> ") + it.GetNext()->GetName();
    const float km = places[4]->GetWeight();
    std::printf("shortest route: %s (%.1f km)\n", path.c_str(), km);

    BxList<std::uint32_t> order;
    VoMpGraphTopologicalSort sort;
    sort.SetInput(graph, order);
    if (!sort.Compute())
        return 1;
    std::string sorted;
    for (std::uint32_t index : sort.GetOutput())
        sorted += (sorted.empty() ? "" : ", ") + graph.FindNode(index)->GetName();
    std::printf("topological order: %s\n", sorted.c_str());

    BxStreamWriteASCIIStringT<CStringW> dot;
    graph.DumpDot(dot, 1);
    std::string text = BxStringConvert::WideToUtf8(dot.GetString());
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    std::printf("%s", text.c_str());
    return km == 9.0f ? 0 : 1;
}
