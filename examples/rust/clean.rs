//! Cleans raw 32-bit float mono PCM at 48000 Hz from standard input to standard output.
//! Build: rustc -O clean.rs -L native=$(pkg-config --variable=libdir audiofilter)

use std::ffi::{c_char, c_int, c_void, CStr};
use std::io::{self, Read, Write};

#[repr(C)]
struct StreamHandle {
    _private: [u8; 0],
}

#[link(name = "audiofilter")]
extern "C" {
    fn audio_filter_create(stream: *mut *mut StreamHandle, format: *const c_void, settings: *const c_void) -> c_int;
    fn audio_filter_destroy(stream: *mut StreamHandle);
    fn audio_filter_process_float(stream: *mut StreamHandle, input: *const f32, output: *mut f32, frames: i32) -> c_int;
    fn audio_filter_drain(stream: *mut StreamHandle, output: *const *mut c_void, frames: i32) -> i32;
    fn audio_filter_latency(stream: *const StreamHandle) -> i32;
    fn audio_filter_strerror(error: c_int) -> *const c_char;
}

fn check(result: i32) -> io::Result<usize> {
    if result >= 0 {
        return Ok(result as usize);
    }
    // SAFETY: the function returns a string that lives as long as the library.
    let message = unsafe { CStr::from_ptr(audio_filter_strerror(result)) };
    Err(io::Error::new(io::ErrorKind::Other, message.to_string_lossy()))
}

/// A stream with the default format: float samples, mono, 48000 Hz.
struct Stream(*mut StreamHandle);

impl Stream {
    fn new() -> io::Result<Self> {
        let mut handle = std::ptr::null_mut();
        // SAFETY: null pointers stand for the defaults.
        check(unsafe { audio_filter_create(&mut handle, std::ptr::null(), std::ptr::null()) })?;
        Ok(Stream(handle))
    }

    fn latency(&self) -> usize {
        // SAFETY: the handle is valid.
        unsafe { audio_filter_latency(self.0) as usize }
    }

    fn process(&mut self, block: &mut [f32]) -> io::Result<()> {
        // SAFETY: input and output are the same buffer, which may be processed in place.
        check(unsafe { audio_filter_process_float(self.0, block.as_ptr(), block.as_mut_ptr(), block.len() as i32) })?;
        Ok(())
    }

    fn drain(&mut self, block: &mut [f32]) -> io::Result<usize> {
        let buffers = [block.as_mut_ptr().cast::<c_void>()];
        // SAFETY: the only buffer holds block.len() frames of one channel.
        check(unsafe { audio_filter_drain(self.0, buffers.as_ptr(), block.len() as i32) })
    }
}

impl Drop for Stream {
    fn drop(&mut self) {
        // SAFETY: the handle is valid and no longer used.
        unsafe { audio_filter_destroy(self.0) }
    }
}

fn main() -> io::Result<()> {
    let mut bytes = Vec::new();
    io::stdin().read_to_end(&mut bytes)?;
    let mut samples: Vec<f32> = bytes.chunks_exact(4).map(|b| f32::from_le_bytes([b[0], b[1], b[2], b[3]])).collect();

    let mut stream = Stream::new()?;
    for block in samples.chunks_mut(1000) {
        stream.process(block)?;
    }
    let mut rest = vec![0.0; stream.latency()];
    let drained = stream.drain(&mut rest)?;
    samples.extend_from_slice(&rest[..drained]);

    let cleaned: Vec<u8> = samples.iter().skip(stream.latency()).flat_map(|s| s.to_le_bytes()).collect();
    io::stdout().write_all(&cleaned)
}
