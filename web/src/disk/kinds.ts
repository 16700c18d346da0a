// Classifies files by their extension.

export const kinds = [
  'folder',
  'video',
  'image',
  'audio',
  'document',
  'archive',
  'program',
  'system',
  'other',
] as const;
export type Kind = (typeof kinds)[number];

const extensions: Partial<Record<Kind, string>> = {
  video: 'mp4 mkv avi mov wmv webm m4v mpg mpeg m2ts flv',
  image: 'jpg jpeg png gif bmp tif tiff webp heic avif svg psd raw dng cr2 nef ico',
  audio: 'mp3 flac wav m4a ogg opus wma aac mid',
  document: 'pdf doc docx xls xlsx ppt pptx odt ods odp rtf txt md csv html htm xml json epub pst ost',
  archive: 'zip rar 7z tar gz xz bz2 zst cab iso img vhd vhdx wim esd',
  program: 'exe dll msi msp msix appx com scr drv ocx bat cmd ps1 jar',
  system: 'sys',
};

const kindOfExtension = new Map(
  kinds.flatMap((kind) => (extensions[kind] ?? '').split(' ').map((extension) => [extension, kind] as const)),
);
kindOfExtension.delete('');

export function kindOf({ name, isDirectory }: { name: string; isDirectory: boolean }): Kind {
  if (isDirectory) return 'folder';
  const dot = name.lastIndexOf('.');
  return (dot > 0 && kindOfExtension.get(name.slice(dot + 1).toLowerCase())) || 'other';
}

/** Returns the bytes of each kind in a folder, the largest first. */
export function sumsOfKinds(items: readonly { name: string; isDirectory: boolean; size: number }[]) {
  const sums = new Map<Kind, number>();
  for (const item of items) {
    const kind = kindOf(item);
    if (item.size > 0) sums.set(kind, (sums.get(kind) ?? 0) + item.size);
  }
  return [...sums].map(([kind, size]) => ({ kind, size })).sort((a, b) => b.size - a.size);
}
