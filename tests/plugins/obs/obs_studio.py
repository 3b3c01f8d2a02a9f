"""OBS Studio on a virtual display, with settings of its own, controlled over obs-websocket (protocol 5)."""
import base64, hashlib, json, os, pathlib, secrets, shutil, subprocess, time

import websocket

PORT = 4455
START_SECONDS = 60

GLOBAL_INI = """\
[General]
FirstRun=true
LastVersion=486539266
EnableAutoUpdates=false
[Basic]
Profile=test
ProfileDir=test
SceneCollection=test
SceneCollectionFile=test
[BasicWindow]
SysTrayEnabled=false
[OBSWebSocket]
FirstLoad=false
ServerEnabled=true
ServerPort={port}
AlertsEnabled=false
AuthRequired=true
ServerPassword={password}
"""

# Records 32-bit float samples, without video.
PROFILE_INI = """\
[General]
Name=test
[Output]
Mode=Advanced
[AdvOut]
RecType=FFmpeg
FFOutputToFile=true
FFFilePath={folder}
FFFormat=wav
FFFormatMimeType=audio/x-wav
FFExtension=wav
FFAEncoder=pcm_f32le
FFAEncoderId=65557
FFAudioMixes=1
FFABitrate=160
[Video]
BaseCX={width}
BaseCY={height}
OutputCX={width}
OutputCY={height}
FPSType=1
FPSInt={fps}
[Audio]
SampleRate={rate}
ChannelSetup={layout}
"""


class ObsError(Exception):
    pass


class ObsStudio:
    """A running OBS. Recordings go to `folder`."""

    def __init__(self, folder, rate=48000, layout="Stereo", size=(128, 72), fps=10):
        self.folder = pathlib.Path(folder)
        self.slowest = 0.0  # response, in seconds
        config = self.folder / "config" / "obs-studio"
        profile = config / "basic" / "profiles" / "test"
        profile.mkdir(parents=True, exist_ok=True)
        shutil.rmtree(config / "basic" / "scenes", ignore_errors=True)  # of an earlier run
        self.password = secrets.token_hex(16)
        (config / "global.ini").write_text(GLOBAL_INI.format(port=PORT, password=self.password))
        (profile / "basic.ini").write_text(PROFILE_INI.format(
            folder=self.folder, rate=rate, layout=layout, width=size[0], height=size[1], fps=fps))
        self.config = config

    def __enter__(self):
        environment = dict(os.environ, HOME=str(self.folder), XDG_CONFIG_HOME=str(self.folder / "config"),
                           XDG_RUNTIME_DIR=str(self.folder), LIBGL_ALWAYS_SOFTWARE="1", QT_QPA_PLATFORM="xcb", LANG="C.UTF-8")
        self.log_file = open(self.folder / "obs.log", "wb")
        self.process = subprocess.Popen(["obs", "--multi", "--disable-updater"], env=environment,
                                        stdout=self.log_file, stderr=subprocess.STDOUT)
        self.socket = self._connect()
        return self

    def __exit__(self, *_):
        self.socket.close()
        self.process.terminate()
        try:
            self.process.wait(20)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        self.log_file.close()

    def log(self):
        return (self.folder / "obs.log").read_text(errors="replace")

    def _connect(self):
        end = time.monotonic() + START_SECONDS
        while True:
            if self.process.poll() is not None:
                raise ObsError(f"OBS has ended:\n{self.log()}")
            try:
                connection = websocket.create_connection(f"ws://127.0.0.1:{PORT}", timeout=30)
                break
            except OSError:
                if time.monotonic() > end:
                    raise ObsError(f"no obs-websocket:\n{self.log()}") from None
                time.sleep(0.1)
        hello = json.loads(connection.recv())["d"]["authentication"]
        secret = base64.b64encode(hashlib.sha256((self.password + hello["salt"]).encode()).digest()).decode()
        answer = base64.b64encode(hashlib.sha256((secret + hello["challenge"]).encode()).digest()).decode()
        connection.send(json.dumps({"op": 1, "d": {"rpcVersion": 1, "authentication": answer, "eventSubscriptions": 0}}))
        if json.loads(connection.recv())["op"] != 2:
            raise ObsError("obs-websocket refused the password")
        return connection

    def call(self, request, **data):
        """Sends a request. @return the data of its response"""
        start = time.monotonic()
        self.socket.send(json.dumps({"op": 6, "d": {"requestType": request, "requestId": "1", "requestData": data}}))
        response = json.loads(self.socket.recv())["d"]
        self.slowest = max(self.slowest, time.monotonic() - start)
        if not response["requestStatus"]["result"]:
            raise ObsError(f"{request}: {response['requestStatus']}")
        return response.get("responseData", {})

    def wait_for(self, what, condition, seconds=20):
        end = time.monotonic() + seconds
        while not condition():
            if time.monotonic() > end:
                raise ObsError(f"{what} did not happen within {seconds} s:\n{self.log()}")
            time.sleep(0.1)
