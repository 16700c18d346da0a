declare module 'lucide:*' {
  const shapes: [tag: string, attributes: Record<string, string>][];
  export default shapes;
}

/** The program's version, set by the build. */
declare const VARNEL_VERSION: string;
