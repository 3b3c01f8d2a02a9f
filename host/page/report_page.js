"use strict";
(() => {
  const player = document.getElementById("player");
  const play = document.getElementById("play");
  const place = document.getElementById("place");
  const time = document.getElementById("time");
  const status = document.getElementById("status");
  const versions = [...player.querySelectorAll("button[data-version]")];
  const sounds = [...document.querySelectorAll("#sounds audio")];
  const cursors = [...document.querySelectorAll(".cursor")];
  const recordingSeconds = Number(player.dataset.duration);
  const excerpts = JSON.parse(player.dataset.excerpts); // [start in the recording, length] in s
  const length = excerpts.reduce((sum, excerpt) => sum + excerpt[1], 0);
  if (!window.AudioContext || sounds.length === 0) {
    return; // the browser's own players stay
  }

  const fade = 0.01; // s
  let context = null;
  let gains = [];
  let sources = [];
  let buffers = null;
  let loading = null;
  let version = 0;
  let position = 0; // s into the excerpts, while paused
  let startedAt = null; // context time of position 0, while playing

  // The sound starts 20 ms after startedAt is set: until then the place is before `position`, perhaps below 0.
  const now = () =>
    startedAt === null ? position : Math.max(0, Math.min(length, context.currentTime - startedAt));

  /// The point of the recording for a position.
  const inRecording = (at) => {
    for (const [start, seconds] of excerpts) {
      if (at <= seconds) {
        return start + at;
      }
      at -= seconds;
    }
    return recordingSeconds;
  };

  /// The position nearest to a point of the recording.
  const inExcerpts = (at) => {
    let before = 0;
    for (const [start, seconds] of excerpts) {
      if (at <= start + seconds) {
        return before + Math.max(0, at - start);
      }
      before += seconds;
    }
    return length;
  };

  const clock = (seconds) => {
    const tenths = Math.floor(seconds * 10);
    const minutes = Math.floor(tenths / 600);
    const hours = Math.floor(minutes / 60);
    const shown = ((tenths % 600) / 10).toFixed(1).padStart(4, "0");
    return hours === 0 ? `${minutes}:${shown}` : `${hours}:${String(minutes % 60).padStart(2, "0")}:${shown}`;
  };

  const show = () => {
    const at = now();
    const shown = clock(inRecording(at)) + " / " + clock(recordingSeconds);
    const share = (100 * inRecording(at)) / recordingSeconds + "%";
    place.value = at;
    place.setAttribute("aria-valuetext", shown);
    time.textContent = shown;
    play.textContent = startedAt === null ? "Play" : "Pause";
    for (const cursor of cursors) {
      cursor.setAttribute("x1", share);
      cursor.setAttribute("x2", share);
      cursor.style.visibility = "visible";
    }
  };

  const tick = () => {
    if (startedAt === null) {
      return;
    }
    if (now() >= length) {
      pause();
      position = 0;
    }
    show();
    requestAnimationFrame(tick);
  };

  const bytesOf = (sound) => {
    const text = atob(sound.getAttribute("src").split(",")[1]);
    return Uint8Array.from(text, (c) => c.charCodeAt(0)).buffer;
  };

  const load = async () => {
    context = new AudioContext();
    buffers = await Promise.all(sounds.map((sound) => context.decodeAudioData(bytesOf(sound))));
    gains = buffers.map((_, i) => {
      const gain = new GainNode(context, { gain: i === version ? 1 : 0 });
      gain.connect(context.destination);
      return gain;
    });
  };

  const stop = () => {
    for (const source of sources) {
      source.stop();
    }
    sources = [];
  };

  /// All versions run together, and one of them is heard: a switch keeps the place to the sample.
  const start = () => {
    stop();
    const begin = context.currentTime + 0.02;
    sources = buffers.map((buffer, i) => {
      const source = new AudioBufferSourceNode(context, { buffer });
      source.connect(gains[i]);
      source.start(begin, position);
      return source;
    });
    startedAt = begin - position;
    requestAnimationFrame(tick);
  };

  const pause = () => {
    position = now();
    startedAt = null;
    stop();
    show();
  };

  const toggle = async () => {
    if (startedAt !== null) {
      pause();
      return;
    }
    try {
      loading ??= load();
      await loading;
      await context.resume();
    } catch (error) {
      status.textContent = "This browser cannot decode the sounds; its own players follow.";
      document.getElementById("sounds").hidden = false;
      return;
    }
    if (startedAt === null) {
      start();
      show();
    }
  };

  const seek = (to) => {
    position = Math.max(0, Math.min(length, to));
    if (startedAt !== null) {
      start();
    }
    show();
  };

  const select = (next) => {
    version = next;
    versions.forEach((button, i) => button.setAttribute("aria-pressed", String(i === version)));
    gains.forEach((gain, i) => gain.gain.setTargetAtTime(i === version ? 1 : 0, context.currentTime, fade / 3));
    status.textContent = versions[version].textContent;
  };

  const keys = {
    " ": toggle,
    a: () => select(0),
    b: () => select(1),
    r: () => select(2),
    x: () => select(version === 0 ? 1 : 0),
    ArrowLeft: () => seek(now() - 2),
    ArrowRight: () => seek(now() + 2),
    Home: () => seek(0),
  };

  document.addEventListener("keydown", (event) => {
    const key = event.key.length === 1 ? event.key.toLowerCase() : event.key;
    const onButton = event.target.closest("button, summary, audio") !== null;
    if (!keys[key] || event.ctrlKey || event.altKey || event.metaKey || (key === " " && onButton)) {
      return;
    }
    event.preventDefault();
    keys[key]();
  });
  play.addEventListener("click", toggle);
  place.addEventListener("input", () => seek(Number(place.value)));
  versions.forEach((button, i) => button.addEventListener("click", () => select(i)));
  for (const canvas of document.querySelectorAll(".canvas")) {
    canvas.addEventListener("click", (event) => {
      const box = canvas.getBoundingClientRect();
      seek(inExcerpts(((event.clientX - box.left) / box.width) * recordingSeconds));
    });
  }

  place.max = length;
  player.hidden = false;
  document.getElementById("sounds").hidden = true;
  show();
})();
