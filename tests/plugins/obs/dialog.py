#!/usr/bin/python3
"""Saves what the filter's dialog in OBS Studio looks like.

Usage: dialog.py FOLDER: holds noise.wav and config/obs-studio/plugins with the plug-in, and receives dialog.png
"""
import pathlib, subprocess, sys, time

from obs_studio import ObsStudio

WIDTH, HEIGHT = 861, 610
SPLITTER_X, SPLITTER_Y = 562, 330  # between preview and settings, in the dialog


def xdotool(*arguments):
    return subprocess.run(["xdotool", *map(str, arguments)], check=True, capture_output=True, text=True).stdout


def main():
    folder = pathlib.Path(sys.argv[1])
    with ObsStudio(folder) as obs:
        obs.wait_for("the scene", lambda: obs.call("GetSceneList")["scenes"])
        scene = obs.call("GetSceneList")["scenes"][0]["sceneName"]
        obs.call("CreateInput", sceneName=scene, inputName="Microphone", inputKind="ffmpeg_source",
                 inputSettings={"local_file": str(folder / "noise.wav")})
        obs.call("CreateSourceFilter", sourceName="Microphone", filterName="Audio filter", filterKind="audio_filter",
                 filterSettings={"suppression": 2, "gain_on": True})
        time.sleep(3)  # of noise, for the report
        obs.call("OpenInputFiltersDialog", inputName="Microphone")
        time.sleep(2)
        dialog = xdotool("search", "--onlyvisible", "--name", "Filters for").split()[0]
        xdotool("windowmove", dialog, 0, 0)
        xdotool("mousemove", SPLITTER_X, SPLITTER_Y, "mousedown", 1)
        for y in range(SPLITTER_Y, 0, -30):
            xdotool("mousemove", SPLITTER_X, y)
        xdotool("mouseup", 1, "windowsize", dialog, WIDTH, HEIGHT)
        time.sleep(1)
        subprocess.run(["import", "-window", dialog, str(folder / "dialog.png")], check=True)


main()
