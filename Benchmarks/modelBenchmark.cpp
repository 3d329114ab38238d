// Loading, saving and posing of models, beside the C library's work on the same numbers.
#include "System/Graphics/model/md5Anim.h"
#include "System/Graphics/model/md5Loader.h"
#include "System/Graphics/model/md5Mesh.h"
#include "Tests/Tools/tempFolder.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include <sys/mman.h>

namespace {

// In memory: the disk is not what is measured.
class MemoryName {
public:
    char const *c_str() const { return m_name.c_str(); }

private:
    std::string m_name = "/proc/self/fd/" + std::to_string(memfd_create("model", MFD_CLOEXEC));
};

float anyFloat(std::mt19937 &random)
{
    return static_cast<float>(static_cast<std::int32_t>(random())) / 1e9f;
}

// Bones in a chain of chains, as limbs are.
Qel::MD5Mesh figure(std::size_t bones, std::size_t vertices)
{
    std::mt19937 random(8);
    Qel::MD5Mesh mesh;
    mesh.bones.resize(bones);
    for (std::size_t i = 0; i < bones; ++i) {
        mesh.bones[i].name = "bone_" + std::to_string(i);
        mesh.bones[i].parent = i == 0 ? "" : "bone_" + std::to_string(i % 5 == 0 ? i / 2 : i - 1);
        mesh.bones[i].position = {anyFloat(random), anyFloat(random), anyFloat(random)};
    }
    for (std::size_t i = 0; i < vertices; ++i) {
        auto const first = static_cast<std::uint16_t>(2 * i);
        auto const corner = static_cast<std::uint16_t>(i);
        mesh.vertices.push_back(
            {std::abs(anyFloat(random)), std::abs(anyFloat(random)), first, 2, {0, 0, 0}});
        mesh.triangles.push_back({corner, corner, static_cast<std::uint16_t>(i / 2), 1});
        for (int share = 0; share < 2; ++share) {
            mesh.weights.push_back({0,
                                    static_cast<std::uint16_t>(random() % bones),
                                    0.5f,
                                    {anyFloat(random), anyFloat(random), anyFloat(random)}});
        }
    }
    mesh.buildHierarchy();
    return mesh;
}

Qel::MD5Anim dance(std::size_t bones)
{
    std::mt19937 random(9);
    Qel::MD5Anim anim;
    for (std::size_t i = 0; i < bones; ++i) {
        for (std::uint32_t attribute = Qel::MD5_YAW; attribute <= Qel::MD5_ROLL; ++attribute) {
            Qel::MD5Channel &channel = anim.channels.emplace_back();
            channel.joint = "bone_" + std::to_string(i);
            channel.attribute = attribute;
            channel.endTime = 4;
            for (int key = 0; key < 96; ++key) {
                channel.keys.push_back(anyFloat(random) + 6.2831855f);
            }
        }
    }
    anim.precalc();
    return anim;
}

void BM_MD5Loader_loadModel(benchmark::State &state)
{
    MemoryName const name;
    Qel::MD5Mesh mesh = figure(200, 32000);
    Qel::MD5Loader().saveModel(name.c_str(), mesh);
    std::size_t const size = test::readFile(name.c_str()).size();
    for (auto _ : state) {
        Qel::MD5Mesh read;
        Qel::MD5Loader().loadModel(name.c_str(), read);
        benchmark::DoNotOptimize(read.weights.data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * size));
}
BENCHMARK(BM_MD5Loader_loadModel)->Unit(benchmark::kMillisecond);

void BM_MD5Loader_loadAnim(benchmark::State &state)
{
    MemoryName const name;
    Qel::MD5Anim anim = dance(300);
    Qel::MD5Loader().saveAnim(name.c_str(), anim);
    std::size_t const size = test::readFile(name.c_str()).size();
    for (auto _ : state) {
        Qel::MD5Anim read;
        Qel::MD5Loader().loadAnim(name.c_str(), read);
        benchmark::DoNotOptimize(read.channels.data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * size));
}
BENCHMARK(BM_MD5Loader_loadAnim)->Unit(benchmark::kMillisecond);

// The bound: the same text, its words passed over, every number through strtof, nothing kept.
void BM_strtof(benchmark::State &state)
{
    MemoryName const name;
    Qel::MD5Mesh mesh = figure(200, 32000);
    Qel::MD5Loader().saveModel(name.c_str(), mesh);
    std::string const text = test::readFile(name.c_str());
    for (auto _ : state) {
        float sum = 0;
        for (char const *at = text.c_str(); *at != 0;) {
            char *end = nullptr;
            if (*at == '-' || (*at >= '0' && *at <= '9')) {
                sum += std::strtof(at, &end);
                at = end;
            } else {
                ++at;
            }
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_strtof)->Unit(benchmark::kMillisecond);

void BM_MD5Loader_saveModel(benchmark::State &state)
{
    MemoryName const name;
    Qel::MD5Mesh mesh = figure(200, 32000);
    for (auto _ : state) {
        Qel::MD5Loader().saveModel(name.c_str(), mesh);
    }
    state.SetBytesProcessed(
        static_cast<std::int64_t>(state.iterations() * test::readFile(name.c_str()).size()));
}
BENCHMARK(BM_MD5Loader_saveModel)->Unit(benchmark::kMillisecond);

// The peer: the lines with most of the numbers, a fprintf each.
void BM_fprintf(benchmark::State &state)
{
    MemoryName const name;
    Qel::MD5Mesh const mesh = figure(200, 32000);
    long size = 0;
    for (auto _ : state) {
        std::FILE *const file = std::fopen(name.c_str(), "wb+");
        int number = 0;
        for (Qel::MD5Vertex const &v : mesh.vertices) {
            std::fprintf(file, "    verts %d %f %f %d %d\n", number++, static_cast<double>(v.u),
                         static_cast<double>(v.v), v.firstWeight, v.weightCount);
        }
        for (Qel::MD5Weight const &w : mesh.weights) {
            std::fprintf(file, "    weight %d %d %f %f %f %f\n", number++, w.bone,
                         static_cast<double>(w.weight), static_cast<double>(w.offset.x),
                         static_cast<double>(w.offset.y), static_cast<double>(w.offset.z));
        }
        size = std::ftell(file);
        std::fclose(file);
    }
    state.SetBytesProcessed(state.iterations() * size);
}
BENCHMARK(BM_fprintf)->Unit(benchmark::kMillisecond);

void BM_MD5Anim_playAnimation(benchmark::State &state)
{
    auto const bones = static_cast<std::size_t>(state.range(0));
    std::vector<Qel::MD5Mesh> meshes(static_cast<std::size_t>(state.range(1)), figure(bones, 0));
    Qel::MD5Anim anim = dance(bones);
    anim.connectBones(meshes[0]);
    float time = 0;
    for (auto _ : state) {
        time = time < 3.9f ? time + 0.01f : 0.01f;
        for (Qel::MD5Mesh &mesh : meshes) {
            mesh.bones[0].position = {0, 0, 0}; // keeps the others, which only grow, away from infinity
            anim.playAnimation(mesh, time);
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * meshes.size() * bones));
}
BENCHMARK(BM_MD5Anim_playAnimation)
    ->Args({30, 1})
    ->Args({300, 1})
    ->Args({30, 10000})
    ->Unit(benchmark::kMicrosecond);

// The bound for a pose: the six sines and cosines of a bone, and one product.
void BM_sinesAndProduct(benchmark::State &state)
{
    auto const bones = static_cast<std::size_t>(state.range(0));
    Qel::MD5Anim const anim = dance(bones);
    D3DXMATRIX matrix;
    D3DXMatrixIdentity(&matrix);
    std::size_t key = 0;
    for (auto _ : state) {
        key = (key + 1) % 96;
        for (std::size_t bone = 0; bone < bones; ++bone) {
            D3DXMATRIX turn;
            for (std::size_t i = 0; i < 3; ++i) {
                float const angle = anim.channels[3 * bone + i].keys[key];
                turn.m[i][0] = std::sin(angle);
                turn.m[i][1] = std::cos(angle);
                turn.m[i][2] = turn.m[i][3] = turn.m[3][i] = 0;
            }
            turn._44 = 1;
            D3DXMATRIX product;
            D3DXMatrixMultiply(&product, &turn, &turn);
            benchmark::DoNotOptimize(product);
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * bones));
}
BENCHMARK(BM_sinesAndProduct)->Arg(30)->Arg(300)->Unit(benchmark::kMicrosecond);

} // namespace
