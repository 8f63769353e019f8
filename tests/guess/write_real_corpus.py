# Writes raw files from real photographs, scans and elevation maps that Debian
# ships, under neutral names, with a table of their true layouts:
#   write_real_corpus.py OUT_DIR
# OUT_DIR/truth.tsv: name, category, source, type, width, height, frames,
# offset, little endian (1/0), "tune" or "held out" (by source image).
import gzip
import pickle
import sys

import numpy as np
from PIL import Image

SKIMAGE = '/usr/lib/python3/dist-packages/skimage/data/'
MPL = '/usr/share/matplotlib/mpl-data/sample_data/'
SCIPY = '/usr/lib/python3/dist-packages/scipy/misc/'
# Sources never looked at while tuning the guess.
HELD_OUT = {'coins', 'gravel', 'chelsea', 'motorcycle', 'dem', 'faces', 'hubble', 'page'}

TYPES = {'u1': '8-bit', 'u2': '16-bit Unsigned', 'i2': '16-bit Signed', 'u4': '32-bit Unsigned',
         'i4': '32-bit Signed', 'f4': '32-bit Real', 'f8': '64-bit Real'}

rng = np.random.default_rng(20)


def picture(name, mode='L'):
    return np.asarray(Image.open(SKIMAGE + name).convert(mode))


def gray_sources():
    out = {n.split('.')[0]: picture(n) for n in
           ['camera.png', 'moon.png', 'coins.png', 'brick.png', 'grass.png', 'gravel.png', 'text.png',
            'page.png', 'cell.png', 'clock_motion.png', 'microaneurysms.png']}
    out['moon'] = out['moon'][::2, ::2]  # stored with every row and column twice
    out['astronaut'] = picture('astronaut.png')
    out['hubble'] = picture('hubble_deep_field.jpg')[:400, :520]
    out['retina'] = picture('retina.jpg')[300:700, 300:780]
    return out


def real_sources():
    """Data that is not 8-bit to begin with: (name, array, its own dtype)."""
    mri = np.frombuffer(gzip.open(MPL + 's1045.ima.gz').read(), '>u2').reshape(256, 256)
    dem = np.load(MPL + 'jacksboro_fault_dem.npz')['elevation']
    topo = np.load(MPL + 'topobathy.npz')['topo']
    disp = np.load(SKIMAGE + 'motorcycle_disp.npz')['arr_0'][::2, ::2]
    return [('mri', mri, 'u2'), ('dem', dem, 'i2'), ('topo', topo, 'f4'), ('motorcycle', disp, 'f4')]


def header(kind, size):
    if kind == 'text':
        lines = ['SIMPLE  = T', 'ORIGIN  = scanner %d' % size, 'DATE    = 2019-03-%02d' % (size % 28 + 1),
                 'COMMENT ' + 'x' * (size % 37)]
        text = ('\n'.join(lines[:2 + size % 3]) + '\n').encode()
        return text if size % 2 else text.ljust(((len(text) + 511) // 512) * 512, b' ')
    if kind == 'zeros':
        return bytes(size)
    return rng.integers(0, 256, size, dtype=np.uint8).tobytes() if kind == 'random' else b''


class Corpus:
    def __init__(self, out):
        self.out, self.rows, self.n = out, [], 0

    def write(self, category, source, values, code, order='<', head=b'', rgb=None):
        """values: (frames, height, width[, 3]) in the element type named by `code`."""
        frames, height, width = values.shape[:3]
        data = np.ascontiguousarray(values.astype(np.dtype(order + code) if code != 'u1' else np.uint8))
        name = 'f%03d.raw' % self.n
        self.n += 1
        with open(self.out + '/' + name, 'wb') as f:
            f.write(head)
            f.write(data.tobytes())
        type_name = TYPES[code] if rgb is None else '24-bit ' + rgb
        little = int(order == '<' and code != 'u1')
        split = 'held out' if source in HELD_OUT else 'tune'
        self.rows.append('\t'.join(map(str, [name, category, source, type_name, width, height, frames,
                                             len(head), little, split])))


def as_type(img8, code):
    """An 8-bit picture spread over the range people store such data in."""
    v = img8.astype(np.float64)
    if code == 'u2': return v * 200 + 1000
    if code == 'i2': return v * 100 - 12000
    if code in ('u4', 'i4'): return v * 3000 + (0 if code == 'u4' else -300000)
    if code == 'f4': return v / 255
    if code == 'f8': return v * 0.37 - 20
    return v


def main(out):
    c = Corpus(out)
    grays = gray_sources()
    orders = ['<', '>']
    # Single images in every type and both byte orders.
    for i, (src, img) in enumerate(grays.items()):
        c.write('8-bit image', src, img[None], 'u1')
        c.write('16-bit x257 image', src, img[None].astype(np.float64) * 257, 'u2', orders[i % 2])
        code = ['i2', 'u4', 'i4', 'f4', 'f8'][i % 5]
        c.write('wider image', src, as_type(img, code)[None], code, orders[(i + 1) % 2])
    # Reals of a picture divided by 3 repeat their mantissa's bytes, which then step least.
    c.write('wider image', 'brick', grays['brick'][None] / 3, 'f8', '<')
    # A small picture on a wide black margin: neighbours are equal at either byte phase.
    c.write('16-bit x257 image', 'cell', np.pad(grays['cell'][:200, :240], 250)[None].astype(np.float64) * 257, 'u2', '>')
    for src, data, code in real_sources():
        for j, order in enumerate(orders):
            c.write('scan or map', src, data[None], code, order)
        c.write('scan or map', src, data.astype(np.float64)[None], 'f8', '<')
    # Colour photographs, interleaved.
    for i, name in enumerate(['astronaut.png', 'coffee.png', 'chelsea.png', 'rocket.jpg', 'motorcycle_left.png',
                              'ihc.png', 'color.png', 'hubble_deep_field.jpg', 'retina.jpg']):
        src = name.split('.')[0].split('_')[0]
        img = picture(name, 'RGB')[:480, :640]
        c.write('colour image', src, img[None], 'u1', rgb='RGB')
        c.write('colour image', src, img[None, :, :, ::-1], 'u1', rgb='BGR')
    # Stacks: crops of one picture drifting across it, and real stacks.
    for i, (src, img) in enumerate(list(grays.items())[:10]):
        h, w = (96 + 16 * (i % 4), 128 + 24 * (i % 3))
        dy, dx = 1 + i % 4, 2 + i % 3
        n = 4 + 3 * (i % 3)
        y0, x0 = (img.shape[0] - h - dy * n) // 2, (img.shape[1] - w - dx * n) // 2
        frames = [img[y0 + dy * k: y0 + dy * k + h, x0 + dx * k: x0 + dx * k + w] for k in range(n)]
        code = ['u1', 'u2', 'i2', 'f4', 'u1'][i % 5]
        c.write('stack', src, as_type(np.stack(frames), code), code, orders[i % 2])
    faces = np.load(SKIMAGE + 'lfw_subset.npy')
    c.write('stack', 'faces', faces[:100], 'f8', '<')
    c.write('stack', 'faces', (faces[100:160] * 255), 'u1')
    # A few small frames, where row lengths that do not divide the true one come close too.
    ascent = np.asarray(pickle.load(open(SCIPY + 'ascent.dat', 'rb'))).astype(np.uint8)
    c.write('stack', 'ascent', np.stack([ascent[10 + 2 * k:110 + 2 * k, 20 + 3 * k:170 + 3 * k] for k in range(3)]), 'u1')
    mri = real_sources()[0][1]
    # A volume: slices of the scan fading, as through a head, in units that cross zero.
    vol = np.stack([mri * (1 - abs(z - 12) / 16) for z in range(24)])[:, ::2, ::2] - 300
    c.write('volume', 'mri', vol, 'i2', '>')
    c.write('volume', 'mri', vol, 'f4', '<')
    # Headers before the data: text of any length, zeros, random bytes.
    for i, (src, img) in enumerate(list(grays.items())[:12]):
        kind = ['text', 'text', 'zeros', 'random'][i % 4]
        code = ['u1', 'u2', 'f4'][i % 3]
        c.write('header ' + kind, src, as_type(img, code)[None], code, orders[i % 2], header(kind, 60 + 97 * i))
    with open(out + '/truth.tsv', 'w') as f:
        f.write('\n'.join(c.rows) + '\n')


main(sys.argv[1])
