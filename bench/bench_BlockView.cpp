// The block view on the default fluvial example at its upper limit (the
// default domain of 251 x 201 nodes, one seeded sequence until the top of the
// block reaches a flat limit 9 m up): the rebuild of the perspective block's
// display lists and one render of it, on the display given (run it under
// xvfb-run -a -s "-screen 0 1280x1024x24" for Mesa's software renderer).
// With --pictures=<dir> it first writes a PNG of each view of that block.

#include "gui/GraphicWindow.h"
#include "gui/InterfaceCanvas.h"
#include "interface/iParameters.h"
#include "interface/iTracer.h"
#include "kernel/domain/Domain.h"
#include "kernel/driver/Simulator.h"
#include "kernel/parameters/ParameterCodes.h"

#include <benchmark/benchmark.h>
#include <wx/wx.h>

#include <GL/gl.h>

#include <cstdio>
#include <memory>
#include <string>

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
        // As after a chunk of iterations: the block is rebuilt.
        canvas.model_changed();
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

// The views of the block, as a user opens them: from above at the middle
// elevation, the two middle sections, the perspective.
void write_pictures(const std::string& dir)
{
    InterfaceCanvas& canvas = *scene().window->canvas();
    double zmin, zmax;
    scene().sim->domain()->min_and_max_elevation_geo(zmin, zmax);
    auto write = [&canvas, &dir](const char* name)
    {
        if (!canvas.printScreen(dir + "/" + name))
            std::fprintf(stderr, "Cannot write %s/%s\n", dir.c_str(), name);
    };
    canvas.setViewType(InterfaceCanvas::aerial);
    write("default_aerial_top.png");
    canvas.setSliceElevation(0.5 * (zmin + zmax));
    write("default_aerial_slice.png");
    canvas.setSliceElevation(1e30);
    canvas.setViewType(InterfaceCanvas::x_section);
    write("default_x_section.png");
    canvas.setViewType(InterfaceCanvas::y_section);
    write("default_y_section.png");
    canvas.setViewType(InterfaceCanvas::topo);
    write("default_perspective.png");
}

} // namespace

int main(int argc, char** argv)
{
    // Taken off the command line first: wxWidgets and the benchmark library refuse options they don't know.
    const std::string flag = "--pictures=";
    std::string pictures;
    for (int k = 1; k < argc; ++k)
        if (std::string(argv[k]).rfind(flag, 0) == 0)
        {
            pictures = std::string(argv[k]).substr(flag.size());
            for (int m = k; m + 1 < argc; ++m)
                argv[m] = argv[m + 1];
            --argc;
            break;
        }
    wxApp::SetInstance(new wxApp());
    // wxWidgets is given the program's name only: the other options are not its own.
    int wx_argc = 1;
    if (!wxEntryStart(wx_argc, argv))
    {
        std::fprintf(stderr, "Cannot start wxWidgets: run under a display (xvfb-run)\n");
        return 1;
    }
    wxTheApp->CallOnInit();
    wxInitAllImageHandlers();
    if (!pictures.empty())
        write_pictures(pictures);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    wxEntryCleanup();
    return 0;
}
