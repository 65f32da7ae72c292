// The block view on the default fluvial example at its upper limit (the
// default domain of 251 x 201 nodes, one seeded sequence until the top of the
// block reaches a flat limit 9 m up): the rebuild of the perspective block's
// display lists and one render of it, on the display given (run it under
// xvfb-run -a -s "-screen 0 1280x1024x24" for Mesa's software renderer).

#include "gui/GraphicWindow.h"
#include "gui/InterfaceCanvas.h"
#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/ParameterCodes.h"
#include "kernel/Simulator.h"

#include <benchmark/benchmark.h>
#include <wx/wx.h>

#include <GL/gl.h>

#include <cstdio>
#include <memory>

namespace
{

void quiet(const char*, TraceLevel) {}

struct Scene
{
    std::unique_ptr<Simulator> sim;
    FaciesColorMap colors;
    GraphicWindow* window = nullptr;
};

Scene& scene()
{
    static Scene s;
    if (s.window != nullptr)
        return s;
    s.sim = std::make_unique<Simulator>();
    s.sim->getTracer()->setTraceFunction(quiet);
    s.sim->getParameters()->setParamInt("SIM_SEED", 165426111);
    s.sim->init(true);
    s.sim->loadUpperLimitFromCst(9., ZUL_STOP);
    s.sim->newSequence();
    while (s.sim->run(5000) == MP_STATUS_OK)
        ;
    s.window = new GraphicWindow(nullptr, s.sim->network(), &s.colors, "bench");
    s.window->SetClientSize(1000, 750);
    s.window->Show();
    for (int k = 0; k < 20 && !s.window->canvas()->IsShownOnScreen(); ++k)
        wxYield();
    s.window->canvas()->render();
    s.window->canvas()->setViewType(InterfaceCanvas::topo);
    return s;
}

void BM_PerspectiveCreateAll(benchmark::State& state)
{
    InterfaceCanvas& canvas = *scene().window->canvas();
    for (auto _ : state)
    {
        canvas.create_all();
        glFinish();
    }
    state.counters["iterations_run"] = scene().sim->getAge();
    state.counters["boxes"] = static_cast<double>(canvas.block_mesh().box_count());
    state.counters["faces"] = static_cast<double>(canvas.block_mesh().quad_count());
}
BENCHMARK(BM_PerspectiveCreateAll)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_PerspectiveRender(benchmark::State& state)
{
    InterfaceCanvas& canvas = *scene().window->canvas();
    canvas.create_all();
    for (auto _ : state)
    {
        canvas.render();
        glFinish();
    }
}
BENCHMARK(BM_PerspectiveRender)->Unit(benchmark::kMillisecond)->Iterations(10);

void BM_SectionCreateAll(benchmark::State& state)
{
    InterfaceCanvas& canvas = *scene().window->canvas();
    canvas.setViewType(InterfaceCanvas::x_section);
    for (auto _ : state)
    {
        canvas.create_all();
        glFinish();
    }
    canvas.setViewType(InterfaceCanvas::topo);
}
BENCHMARK(BM_SectionCreateAll)->Unit(benchmark::kMillisecond)->Iterations(10);

} // namespace

int main(int argc, char** argv)
{
    wxApp::SetInstance(new wxApp());
    if (!wxEntryStart(argc, argv))
    {
        std::fprintf(stderr, "Cannot start wxWidgets: run under a display (xvfb-run)\n");
        return 1;
    }
    wxTheApp->CallOnInit();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    wxEntryCleanup();
    return 0;
}
