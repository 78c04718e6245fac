"""pytest plugin for the sampled run of the real programs: keeps the tests whose
node id hashes into the sample (QNL_SAMPLE=k keeps about one in k). The hash
is stable, so the facade and the stock run see the same tests."""
import os
import zlib


def pytest_collection_modifyitems(config, items):
    k = int(os.environ.get("QNL_SAMPLE", "1"))
    if k <= 1:
        return
    keep = [i for i in items if zlib.crc32(i.nodeid.encode()) % k == 0]
    config.hook.pytest_deselected(items=[i for i in items if i not in keep])
    items[:] = keep
