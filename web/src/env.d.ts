declare module 'lucide:*' {
  const shapes: [tag: string, attributes: Record<string, string>][];
  export default shapes;
}

/** Version of the program, from package.json. */
declare const VARNEL_VERSION: string;
