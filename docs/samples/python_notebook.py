# %% [markdown]
# A notebook shows a pad by its signature, and waits for the person without standing still. The pad here is the
# simulated one, which signs with somebody's initials.
# %%
from scribera import Pad

pad = Pad("K210", size=(400, 242))
pad.pen_width = 4
points = pad.live_points()  # from now on; none is lost until they are asked for
# %% [markdown]
# In a notebook `await` may stand in a cell. Two things happen at the same time: the person signs, and the points
# arrive.
# %%
import asyncio


async def follow():
    return [point async for point in points]


following = asyncio.create_task(follow())
status = await pad.wait_async(timeout=60)
points.close()
live = await following
print(f"{status}: {len(live)} points came, {len(pad)} are stored")
# %% [markdown]
# The pad as the last line of a cell is its picture.
# %%
pad
# %% [markdown]
# The points are a structured NumPy array, a view of the ink packet stream.
# %%
array = pad.array()
array.dtype
# %%
ends = array["status"] == 1
print(f"{len(array)} points in {ends.sum()} strokes, pressure {array['pressure'].min()} to {array['pressure'].max()}")
array[["x", "y", "pressure", "status"]][:4]
# %% [markdown]
# The way of the pen, in pad units: within strokes only.
# %%
import numpy

steps = numpy.hypot(numpy.diff(array["x"].astype(float)), numpy.diff(array["y"].astype(float)))
print(f"{steps[~ends[:-1]].sum():.0f} pad units")
# %% [markdown]
# Times have their zone, and Pillow takes the picture from here.
# %%
pad[0].when.tzinfo is not None
# %%
image = pad.to_pil(clip=(10, 10))
print(image.mode, *image.size)
# %%
pad.close()
