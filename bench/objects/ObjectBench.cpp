// Object files: loading one of 100,000 triangles into the shared buffers, and one frame of
// the MDD player for a mesh of 50,000 vertices with smooth normals, on one core and on
// all cores. Each is set beside a memcpy of its own vertex data, measured in this run.
#include "qx4d/content/Chunk.h"
#include "qx4d/content/MddPlayer.h"
#include "qx4d/content/Object.h"
#include "qx4d/core/FileManager.h"
#include "qx4d/core/device/GraphicsDevice.h"
#include "qx4d/core/device/Renderer.h"
#include "tools/objectfile/ObjectModel.h"

#include <benchmark/benchmark.h>
#include <omp.h>

#include <cstring>
#include <filesystem>
#include <fstream>

namespace {

using namespace qx4d;

/// A grid of `columns` by `rows` vertices in the plane z = 0, two triangles a cell.
void Grid(int columns, int rows, std::vector<Float3>& positions, std::vector<uint32_t>& corners)
{
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < columns; ++x) positions.push_back({float(x), float(y), 0.1f * float((x * 7 + y * 3) % 5)});
    for (int y = 0; y + 1 < rows; ++y) {
        for (int x = 0; x + 1 < columns; ++x) {
            const auto at = [&](int dx, int dy) { return uint32_t((y + dy) * columns + x + dx); };
            corners.insert(corners.end(), {at(0, 1), at(1, 1), at(1, 0), at(0, 1), at(1, 0), at(0, 0)});
        }
    }
}

/// The engine as an object file needs it: a small device, the renderer, "OBJECTS:".
struct Engine {
    Engine()
    {
        gpu::D3DPRESENT_PARAMETERS parameters;
        parameters.BackBufferWidth = parameters.BackBufferHeight = 4;
        parameters.BackBufferFormat = gpu::D3DFMT_A8R8G8B8;
        if (device.Create(parameters)) renderer = std::make_unique<Renderer>();
        folder = std::filesystem::temp_directory_path() / "qx4d-object-bench";
        std::filesystem::create_directories(folder);
        files.Mount(u"OBJECTS", folder.u16string());
    }
    ~Engine() { std::filesystem::remove_all(folder); }

    GraphicsDevice device;
    std::unique_ptr<Renderer> renderer;
    FileManager files;
    std::filesystem::path folder;
};

Engine& TheEngine()
{
    static Engine engine;
    return engine;
}

/// 250 by 201 vertices: 100,000 triangles.
tools::ObjectModel LargeObject()
{
    std::vector<Float3> positions;
    std::vector<uint32_t> corners;
    Grid(250, 201, positions, corners);
    tools::MeshModel mesh;
    mesh.declaration = tools::PositionNormalUvDeclaration();
    mesh.stride = 32;
    mesh.vertices.resize(positions.size() * 32);
    for (size_t v = 0; v < positions.size(); ++v) {
        const float vertex[8] = {positions[v][0], positions[v][1], positions[v][2], 0, 0, -1, 0, 0};
        std::memcpy(mesh.vertices.data() + v * 32, vertex, 32);
    }
    mesh.indices = corners;
    tools::ItemModel item;
    item.kind = tools::ItemModel::Kind::Mesh;
    item.mesh = std::move(mesh);
    tools::ObjectModel model;
    model.items.push_back(std::move(item));
    return model;
}

void BM_LoadObject100kTriangles(benchmark::State& state)
{
    Engine& engine = TheEngine();
    if (!engine.renderer) {
        state.SkipWithError("no EGL device");
        return;
    }
    const std::vector<uint8_t> bytes = tools::WriteObject(LargeObject());
    std::ofstream(engine.folder / "large.qxo", std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    for (auto _ : state) {
        Object object;
        benchmark::DoNotOptimize(LoadObject(u"large.qxo", object));
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
}
BENCHMARK(BM_LoadObject100kTriangles)->Unit(benchmark::kMillisecond);

/// 250 by 200 vertices, two stored frames, smooth normals at the default angle.
MddPlayer& LargeMdd()
{
    static MddPlayer player = [] {
        tools::MddModel mdd;
        std::vector<Float3> positions;
        std::vector<uint32_t> corners;
        Grid(250, 200, positions, corners);
        mdd.vertexCount = uint32_t(positions.size());
        mdd.frames = {positions, positions};
        for (Float3& p : mdd.frames[1]) p[2] += 0.5f * p[0] / 250.0f;
        mdd.timeline = {0, 1};
        mdd.triangles.assign(corners.begin(), corners.end());
        mdd.uvSetCount = 1;
        mdd.uvSets[0] = {{0, 0}};
        mdd.uvIndices[0].assign(corners.size(), 0);
        ChunkWriter out;
        tools::WriteMdd(out, mdd);
        Chunk chunk(0, out.bytes.data(), out.bytes.size());
        MddPlayer loaded;
        loaded.Load(chunk);
        return loaded;
    }();
    return player;
}

void BM_MddUpdate50kVertices(benchmark::State& state)
{
    MddPlayer& player = LargeMdd();
    const int threads = int(state.range(0)) == 0 ? omp_get_num_procs() : int(state.range(0));
    omp_set_num_threads(threads);
    float time = 0.0f;
    for (auto _ : state) {
        player.Evaluate(time);
        time = time > 0.06f ? 0.0f : time + 0.001f;
        benchmark::DoNotOptimize(player.vertices.data());
    }
    state.counters["threads"] = threads;
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(player.vertices.size() * sizeof(float)));
}
BENCHMARK(BM_MddUpdate50kVertices)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();

/// The yardsticks: a memcpy of the vertex data each of the two benchmarks produces.
void BM_MemcpyVertexData(benchmark::State& state)
{
    const size_t bytes = size_t(state.range(0));
    std::vector<uint8_t> source(bytes, 1), target(bytes);
    for (auto _ : state) {
        std::memcpy(target.data(), source.data(), bytes);
        benchmark::DoNotOptimize(target.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes));
}
// 50,250 vertices of 32 bytes (the large object); 3 x 99,102 corners of 32 bytes (the MDD).
BENCHMARK(BM_MemcpyVertexData)->Arg(50250 * 32)->Arg(297306 * 32)->Unit(benchmark::kMillisecond);

}  // namespace
