from scribera import Pad, Status

with Pad("K210", size=(660, 400)) as pad:  # off screen, in its proportions
    pad.on_point(lambda point: print(point.x, point.y, point.pressure))  # live, on the driver's thread
    if pad.wait(timeout=60) is Status.CONFIRM:  # until the person taps confirm or cancel on the pad
        pad.save("signature.png", dpi=300, clip=(10, 10))  # just the ink, with a margin of 10 pixels
        print(f"{len(pad)} points in {len(pad.strokes())} strokes, the first at {pad[0].time}")
