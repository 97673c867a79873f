// The functions through which the TypeScript of the page uses the C++, as three WebAssembly
// modules:
//
// velto.wasm    the practice page: session, record, texts and layout; on the page's thread
// render.wasm   renders trials; in a worker
// mixer.wasm    plays them; on the audio thread
//
// Each module holds one object and belongs to one thread. Texts are UTF-8 without a terminating
// zero. A text or buffer that a function returns is valid until the next call into its module.
// Enums are passed as the indices of their values.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(__wasm__)
#define VELTO_EXPORT(name) __attribute__((export_name(#name)))
#define VELTO_IMPORT(name) __attribute__((import_module("velto"), import_name(#name)))
#else
#define VELTO_EXPORT(name)
#define VELTO_IMPORT(name)
#endif

extern "C" {

// --- velto.wasm: what the page provides ---

// PageHost::render(): render.wasm makes the trial of these arguments.
VELTO_IMPORT(render)
void velto_host_render(int drill, int material, std::uint64_t seed, double difficulty, bool fair);
VELTO_IMPORT(openSound)
void velto_host_openSound();
// Plays `count` slots, whose samples velto_page_samples() returns during the call.
VELTO_IMPORT(play)
void velto_host_play(int count, int chosen, double delayFrames, bool throughSilence);
VELTO_IMPORT(switchTo)
void velto_host_switchTo(int chosen);
VELTO_IMPORT(silence)
void velto_host_silence();
VELTO_IMPORT(keepRecord)
void velto_host_keepRecord(const char* bytes, std::size_t size);

// --- velto.wasm: what it provides ---

// Room for `size` bytes that the page passes to the next call.
VELTO_EXPORT(input) char* velto_page_input(std::size_t size);
// The length of the text that was returned last.
VELTO_EXPORT(outputSize) std::size_t velto_page_outputSize();

// Starts practice with the record in the input. Call once, before the other functions below. A
// drill that is out of range is the first one.
VELTO_EXPORT(start)
void velto_page_start(int drill, bool fair, double secondsSince1970, std::size_t recordSize);

// The commands of Page.
VELTO_EXPORT(chooseDrill) void velto_page_chooseDrill(int index);
VELTO_EXPORT(chooseMaterial) void velto_page_chooseMaterial(int index);
VELTO_EXPORT(chooseSlot) void velto_page_chooseSlot(int index);
VELTO_EXPORT(answerSlot) void velto_page_answerSlot(int index);
VELTO_EXPORT(answerAt) void velto_page_answerAt(double x, double width);
VELTO_EXPORT(answerNearest) void velto_page_answerNearest(double value);
VELTO_EXPORT(advance) void velto_page_advance();
// The key's name is in the input. `flags` are the sum of 1: modified, 2: caps lock, 4: repeat.
VELTO_EXPORT(press) bool velto_page_press(std::size_t keySize, int flags, int focus);
VELTO_EXPORT(suspend) void velto_page_suspend();
VELTO_EXPORT(resume) void velto_page_resume();

// Begins to take a render of `count` slots of `frames` frames each. The page then fills their
// buffers, and calls takeRender().
VELTO_EXPORT(beginRender) void velto_page_beginRender(int count, std::size_t frames);
// The buffer of a slot's channel (0: left, 1: right): of the render being taken, or of what
// velto_host_play() plays. nullptr if there is none.
VELTO_EXPORT(samples) float* velto_page_samples(int slot, int channel);
// The frames of each of these buffers.
VELTO_EXPORT(frames) std::size_t velto_page_frames();
VELTO_EXPORT(takeRender) void velto_page_takeRender(std::uint64_t seed);
VELTO_EXPORT(soundOpened) void velto_page_soundOpened(double latencySeconds);
// The reason is in the input.
VELTO_EXPORT(soundFailed) void velto_page_soundFailed(std::size_t size);

// See Page. The record is in the input.
VELTO_EXPORT(recordKept) void velto_page_recordKept();
VELTO_EXPORT(recordFailed) void velto_page_recordFailed();
VELTO_EXPORT(mergeRecord) bool velto_page_mergeRecord(std::size_t size);
// True if the input is a record. May be called before start().
VELTO_EXPORT(isRecord) bool velto_page_isRecord(std::size_t size);

// JSON; see Page.
VELTO_EXPORT(state) const char* velto_page_state();
VELTO_EXPORT(strip)
const char* velto_page_strip(double width, double answerChip, double truthChip, double ratio);
VELTO_EXPORT(slotShares) const char* velto_page_slotShares(double width, double ratio);
VELTO_EXPORT(mapShares) const char* velto_page_mapShares(double width, double ratio);
VELTO_EXPORT(curve) const char* velto_page_curve(double width, double height);
VELTO_EXPORT(outline) const char* velto_page_outline(double radius, double width);
VELTO_EXPORT(words) const char* velto_page_words();
VELTO_EXPORT(palettes) const char* velto_page_palettes();

// --- render.wasm ---

// Renders a trial and returns the number of its slots.
VELTO_EXPORT(render)
int velto_render(int drill, int material, std::uint64_t seed, double difficulty, bool fair);
VELTO_EXPORT(frames) std::size_t velto_render_frames();
VELTO_EXPORT(samples) const float* velto_render_samples(int slot, int channel);
// The RenderHash of the trial and its slots: 16 digits.
VELTO_EXPORT(hash) const char* velto_render_hash();

// --- mixer.wasm; needs nothing of its surroundings ---

// The buffer of a slot's channel for the next play(). `frames` are those of all buffers.
VELTO_EXPORT(samples) float* velto_mixer_samples(int slot, int channel, std::size_t frames);
VELTO_EXPORT(play)
void velto_mixer_play(int count, int chosen, double delayFrames, bool throughSilence);
VELTO_EXPORT(switchTo) void velto_mixer_switchTo(int chosen);
VELTO_EXPORT(silence) void velto_mixer_silence();
// The next `frames` frames (at most 4096), interleaved, with the headroom. Real-time safe.
VELTO_EXPORT(render) const float* velto_mixer_render(std::size_t frames);
}
