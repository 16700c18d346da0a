// What compiled JSX calls; the build puts it into every file.
export { Fragment, h } from 'preact';
